// The changes that lead from one configuration to another.
#ifndef PLATFORM_CONFD_DIFF_H_
#define PLATFORM_CONFD_DIFF_H_

#include <functional>

#include "confd/store.h"
#include "path.h"
#include "snapshot.h"

namespace confd {

/// As VisitChanges, but only for changes at or below one path, which was looked up in both
/// configurations. List entries above that path are not reported as modified.
/// @param presence_containers  whether a presence container with a change below it is reported as
/// modified too
void VisitChangesBelow(const LoadedSnapshot& running, const Place& running_place,
                       const LoadedSnapshot& candidate, const Place& candidate_place,
                       bool presence_containers,
                       const std::function<confd_iter_ret(const Change&)>& visit);

}  // namespace confd

#endif  // PLATFORM_CONFD_DIFF_H_
