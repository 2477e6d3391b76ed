// Which validation points a transaction concerns, and in which order they are called.
#ifndef HOST_TRANSACTION_TRIGGERS_H_
#define HOST_TRANSACTION_TRIGGERS_H_

#include <optional>
#include <string>
#include <vector>

#include "confd/validation_call.h"
#include "store/diff.h"
#include "store/schema.h"
#include "store/snapshot.h"

namespace ipvald {

/// A call and why it is made. The nodes belong to the snapshots that the calls were computed from,
/// which must live as long.
struct TriggeredCall : confd::ValidationCall {
  /// First change that led to the call; none when the point is called at every validation.
  std::optional<store::Change> cause;
};

/// The calls for the change from `running` to `candidate`, in the order in which they are made: by
/// priority, then the order of the points in the data model, then instance order. Each pair of
/// point and keypath occurs once.
///
/// A point is concerned by a node that was created, deleted, moved or given a value and is a
/// dependency of the point, or lies above or below one; a leaf is a dependency of its own points. A
/// relative dependency concerns the instances below the lowest node that both have in common, an
/// absolute one all instances. A point without dependencies is concerned by every change. Instances
/// that the candidate does not have are not called.
std::vector<TriggeredCall> FindTriggeredCalls(const store::Snapshot& running,
                                              const store::Snapshot& candidate);

/// Why the call is made, for example "changed /config/interface/l3{7}/vrf".
std::string ReasonOf(const store::Schema& schema, const TriggeredCall& call);

}  // namespace ipvald

#endif  // HOST_TRANSACTION_TRIGGERS_H_
