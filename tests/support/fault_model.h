// What a platform call that goes wrong amounts to: the plug-in judges as it would judge a
// configuration that lacks what the call would have given. The model knows configurations and the
// sequence of calls, and nothing of the checks.
#ifndef TESTS_SUPPORT_FAULT_MODEL_H_
#define TESTS_SUPPORT_FAULT_MODEL_H_

#include <string>
#include <vector>

#include "confd/watch_calls.h"
#include "support/device.h"

namespace tests {

/// What a call of a validation point is about.
struct Situation {
  Device running;
  Device candidate;
};

struct Fault {
  size_t position;  ///< in the sequence of calls that an undisturbed call of the point makes
  confd::CallRequest request;
};

/// What has to come of a fault: the verdict of `equivalent`, or else one of the other two.
struct Expectation {
  Situation equivalent;
  /// The fault concerns the tables alone, and the walk over the changes follows as ever.
  bool walk_follows = false;
  std::string assertion = {};  ///< place of the one that ends the process, "config:52"
  std::string exception = {};  ///< type of the one that is thrown
};

/// The faults that make sense in such a sequence of calls: each call fails, and where it gives a
/// value that has a type, it also gives one of another type; of several values, one at a time.
std::vector<Fault> FaultsOf(const std::vector<std::string>& calls);

/// @param route_families  families for which the point reads the route table, in its order:
///                        "4", "6", "46" or ""
/// @param subject         for the lower-layer point: the name of the L3 interface
Expectation Expect(const Situation& situation, const std::vector<std::string>& calls,
                   const Fault& fault, const std::string& route_families,
                   const std::string& subject);

}  // namespace tests

#endif  // TESTS_SUPPORT_FAULT_MODEL_H_
