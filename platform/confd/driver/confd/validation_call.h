// A call of a validation point, as a host makes it.
#ifndef CONFD_VALIDATION_CALL_H_
#define CONFD_VALIDATION_CALL_H_

#include "confd/keypath.h"
#include "store/schema.h"

namespace confd {

/// One call of a validation point. The nodes belong to a snapshot, which must live as long.
struct ValidationCall {
  const store::ValidationPoint* point;

  /// Node of the candidate that the call is about; null for a list as a whole (call-once).
  const lyd_node* instance;

  /// Node that holds the list of a call-once point; null for a top-level list and for calls with an
  /// instance.
  const lyd_node* list_parent;
};

/// Keypath of the call.
inline Keypath KeypathOf(const store::Schema& schema, const ValidationCall& call) {
  if (call.instance != nullptr) return Keypath(schema, call.instance);
  return Keypath(schema, call.list_parent, call.point->node);
}

}  // namespace confd

#endif  // CONFD_VALIDATION_CALL_H_
