// Values of libyang as ConfD values.
#ifndef PLATFORM_CONFD_VALUE_H_
#define PLATFORM_CONFD_VALUE_H_

#include <libyang/libyang.h>

#include <cstddef>

#include "confd_lib.h"
#include "store/tags.h"

namespace confd {

/// The value of a leaf or leaf-list entry; owns its memory. C_NOEXISTS for a type that the stand-in
/// does not carry (bits, instance-identifier).
confd_value_t LeafValue(const lyd_node* leaf);

/// Releases what a value owns, as confd_free_value does, unseen by the watcher of calls.
void FreeOwned(confd_value_t* value);

/// Puts a value of another type in the place of `value`: an int32 for a text, a text for any other.
void ReplaceByOtherType(confd_value_t* value);

/// A C_XMLTAG value.
confd_value_t TagValue(store::NodeTag tag);

/// Whether values of the type have memory of their own that the stand-in allocates.
inline bool OwnsBuffer(confd_vtype type) {
  return type == C_BUF || type == C_BINARY || type == C_HEXSTR || type == C_BITBIG;
}

/// A value of such a type with a copy of these bytes.
confd_value_t BufferValue(confd_vtype type, const void* bytes, size_t size);

}  // namespace confd

#endif  // PLATFORM_CONFD_VALUE_H_
