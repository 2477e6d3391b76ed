// What plugin_faults_test injects its faults into, and where the plug-in then ends.
#ifndef TESTS_SUPPORT_FAULT_CASES_H_
#define TESTS_SUPPORT_FAULT_CASES_H_

#include <ostream>
#include <set>
#include <string>
#include <vector>

#include "support/fault_model.h"

namespace tests {

/// Where a value of another type ends the process. Support tooling knows these places.
struct DocumentedAssertion {
  const char* place;
  const char* function;
  const char* text;
};

/// All but five, which look again at what was tested on the way to them, so that a wrong type never
/// gets there: validate_intf_vrf:225 behind config:52, and validate_ip_addr_cross_ospf:60 and 92
/// behind 53 and 84, where other tests change the value in between; and config:164 and 179, right
/// behind a look at the same type.
const std::vector<DocumentedAssertion>& DocumentedAssertions();

/// A transaction that every point accepts.
Situation CleanSituation();

/// A call of a validation point.
struct FaultCase {
  const char* name;
  const char* point;
  const char* path;
  const char* route_families;        // that the point reads, in its order
  void (*spoil)(Situation&);         // makes the point refuse
  std::string refusal;               // its text then
  std::set<std::string> assertions;  // that a wrong type reaches
  bool clean_too = true;             // false: another row makes the same calls when it accepts
};

inline std::ostream& operator<<(std::ostream& out, const FaultCase& c) { return out << c.name; }

/// All eleven points, with every kind of keypath that makes a difference.
const std::vector<FaultCase>& FaultCases();

}  // namespace tests

#endif  // TESTS_SUPPORT_FAULT_CASES_H_
