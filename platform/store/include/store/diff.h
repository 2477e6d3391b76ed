// The changes that lead from one configuration to another.
#ifndef STORE_DIFF_H_
#define STORE_DIFF_H_

#include <functional>

#include "store/place.h"
#include "store/snapshot.h"

namespace store {

enum class ChangeKind {
  kCreated,
  kDeleted,
  kModified,  // something below the entry or presence container changed
  kValueSet,
  kMovedAfter,
};

/// What a visitor wants after a change.
enum class VisitResult {
  kStop,      // no more changes
  kRecurse,   // those below this one, too
  kContinue,  // those behind it
  kOther,     // as kRecurse, but nothing below what was created
};

/// One change between two snapshots. `running` is null for a created node, `candidate` for a
/// deleted one. `after` is the entry behind which a moved entry now stands, null when it is the
/// first.
struct Change {
  ChangeKind kind;
  const lyd_node* running;
  const lyd_node* candidate;
  const lyd_node* after = nullptr;

  const lyd_node* node() const { return candidate != nullptr ? candidate : running; }
};

/// Walks the changes from `running` to `candidate`: nodes in schema order, entries in list order
/// (deleted ones first where the user orders the list), parents before children. Of what was
/// deleted only the topmost node is reported. An entry or presence container with a change below it
/// is reported as modified before that change.
void VisitChanges(const Snapshot& running, const Snapshot& candidate,
                  const std::function<VisitResult(const Change&)>& visit);

/// As VisitChanges, but only for changes at or below one path, which was looked up in both
/// configurations. List entries above that path are not reported as modified.
/// @param presence_containers  whether a presence container with a change below it is reported as
/// modified too
void VisitChangesBelow(const Snapshot& running, const Place& running_place,
                       const Snapshot& candidate, const Place& candidate_place,
                       bool presence_containers,
                       const std::function<VisitResult(const Change&)>& visit);

}  // namespace store

#endif  // STORE_DIFF_H_
