// The changes that lead from one configuration to another.
#ifndef STORE_DIFF_H_
#define STORE_DIFF_H_

#include <functional>

#include "confd_lib.h"
#include "store/place.h"
#include "store/snapshot.h"

namespace confd {

/// One change between two snapshots. `running` is null for a created node, `candidate` for a
/// deleted one. `after` is the entry behind which a moved entry now stands, null when it is the
/// first.
struct Change {
  confd_iter_op op;
  const lyd_node* running;
  const lyd_node* candidate;
  const lyd_node* after = nullptr;

  const lyd_node* node() const { return candidate != nullptr ? candidate : running; }
};

/// Walks the changes from `running` to `candidate` in the order and with the rules of
/// maapi_diff_iterate with ITER_WANT_P_CONTAINER: presence containers are reported.
void VisitChanges(const Snapshot& running, const Snapshot& candidate,
                  const std::function<confd_iter_ret(const Change&)>& visit);

/// As VisitChanges, but only for changes at or below one path, which was looked up in both
/// configurations. List entries above that path are not reported as modified.
/// @param presence_containers  whether a presence container with a change below it is reported as
/// modified too
void VisitChangesBelow(const Snapshot& running, const Place& running_place,
                       const Snapshot& candidate, const Place& candidate_place,
                       bool presence_containers,
                       const std::function<confd_iter_ret(const Change&)>& visit);

}  // namespace confd

#endif  // STORE_DIFF_H_
