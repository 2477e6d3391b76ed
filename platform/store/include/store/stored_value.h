// How libyang keeps the value of a leaf.
#ifndef STORE_STORED_VALUE_H_
#define STORE_STORED_VALUE_H_

#include <libyang/libyang.h>

namespace store {

/// The structure in which libyang keeps a value that does not fit into an lyd_value.
template <typename T>
const T* Stored(const lyd_value& value) {
  const void* memory = sizeof(T) > LYD_VALUE_FIXED_MEM_SIZE
                           ? value.dyn_mem
                           : static_cast<const void*>(value.fixed_mem);
  return static_cast<const T*>(memory);
}

/// Value of a leaf or leaf-list entry; behind a union, that of the member type that matched.
inline const lyd_value& MemberValue(const lyd_node* leaf) {
  const lyd_value* value = &reinterpret_cast<const lyd_node_term*>(leaf)->value;
  while (value->realtype->basetype == LY_TYPE_UNION) value = &value->subvalue->value;
  return *value;
}

/// Type of a leaf or leaf-list as the data model declares it.
inline const lysc_type* DeclaredType(const lysc_node* leaf) {
  return (leaf->nodetype == LYS_LEAF) ? reinterpret_cast<const lysc_node_leaf*>(leaf)->type
                                      : reinterpret_cast<const lysc_node_leaflist*>(leaf)->type;
}

/// Canonical text of a leaf or leaf-list entry.
inline const char* ValueText(const lyd_node* leaf) { return lyd_get_value(leaf); }

}  // namespace store

#endif  // STORE_STORED_VALUE_H_
