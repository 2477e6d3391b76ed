// What is asked of a single node of the data model.
#ifndef STORE_SCHEMA_NODE_H_
#define STORE_SCHEMA_NODE_H_

#include <libyang/libyang.h>

#include <string>
#include <vector>

namespace store {

/// Whether instances of the node are told apart by a key: lists and leaf-lists.
inline bool IsListLike(const lysc_node* node) {
  return (node->nodetype & (LYS_LIST | LYS_LEAFLIST)) != 0;
}

/// Parent data node of a schema node, choices and cases looked through; null at the top.
const lysc_node* DataParent(const lysc_node* node);

/// The key leaves of a list in the order of its key statement.
std::vector<const lysc_node*> KeyLeaves(const lysc_node* list);

/// Path of a schema node without keys, such as "/config/interface/l3".
std::string SchemaPath(const lysc_node* node);

}  // namespace store

#endif  // STORE_SCHEMA_NODE_H_
