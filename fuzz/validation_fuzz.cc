// The whole plug-in: a device, and a sequence of calls of its validation points.
//
// What must hold for the verdicts on one `Config`, whose tables are read at most once per family
// and never cleared, as long as it is used for one transaction:
//
// - A point asked on a used `Config` says what it says on a fresh one, with two exceptions. Names,
//   addresses, VRFs and VLANs in a table depend on the candidate alone, not on the order in which
//   the families were read, and each point loads all that it looks at. But the route checks look
//   at whichever family of routes is loaded:
//     ipv4_addr_route_validation  once IPv6 routes were read, also finds IPv6 prefixes that are a
//                                 black hole and have a next hop. It refuses all that a fresh one
//                                 refuses.
//     ipv6_addr_route_validation  once IPv4 routes were read, also finds such IPv4 prefixes, and
//                                 compares IPv4 next hops with addresses in place of IPv6 ones. It
//                                 refuses all that a fresh one refuses for another reason than an
//                                 address conflict.
//   static_route_l3_intf_validation looks at loopbacks and management interfaces as well when they
//   happen to be loaded, but no output interface is called like one: its third character is a
//   blank.
// - So what a `Config` says depends on which points it was asked before, not on their order: after
//   all calls, and after all calls from the last to the first, every call gets the same answer.
// - A point that only looks at tables makes no call of the data store when it is asked again, and
//   in a later transaction says what it said before, whatever that transaction changes.
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "confd/call_count.h"
#include "judge.h"
#include "require.h"
#include "scenario_decoder.h"
#include "support/data_model.h"

namespace {

using fuzz::Judge;
using fuzz::PlannedCall;
using fuzz::Require;
using fuzz::TransactionOnDevice;
using Calls = std::vector<PlannedCall>;
using SnapshotPtr = std::shared_ptr<const store::Snapshot>;

constexpr size_t kFewCalls = 2;  // of a large device

bool IsConflict(const std::string& verdict) {
  return verdict.ends_with("cannot have address conflict.");
}

// Which families of routes a `Config` may have read.
class RoutesRead {
 public:
  void Note(const PlannedCall& call) {
    const bool both = call.Reaches("static_route_l3_intf_validation");
    ipv4_ = ipv4_ || both || call.Reaches("ipv4_addr_validation") ||
            call.Reaches("ipv4_addr_route_validation") || call.Reaches("intf_vrf_validation");
    ipv6_ = ipv6_ || both || call.Reaches("ipv6_addr_validation") ||
            call.Reaches("ipv6_addr_route_validation");
  }

  // REQUIRES: noted for what came before the call, not for the call.
  void Compare(const PlannedCall& call, const std::string& fresh, const std::string& used) const {
    const std::string what = call.plan.opaque + ": \"" + used + "\", fresh \"" + fresh + "\"";
    const bool may_differ = (ipv6_ && call.Reaches("ipv4_addr_route_validation")) ||
                            (ipv4_ && call.Reaches("ipv6_addr_route_validation"));
    if (!may_differ) {
      Require(used == fresh, "the same verdict on a used Config: " + what);
    } else if (!IsConflict(fresh) || call.Reaches("ipv4_addr_route_validation")) {
      Require(fresh == "accepted" || used != "accepted", "refused on a used Config too: " + what);
    }
  }

 private:
  bool ipv4_ = false;
  bool ipv6_ = false;
};

// A point that looks at nothing but the tables of the `Config`.
bool UsesOnlyTables(const PlannedCall& call) {
  return !call.Reaches("validate_ipv6_nd_ra") && !call.Reaches("lower_layer") &&
         !call.Reaches("intf_vrf");
}

// What `forward` says after all calls.
std::vector<std::string> CompareOrders(TransactionOnDevice& transaction, const Calls& calls,
                                       Judge& forward) {
  Judge backward;
  for (auto call = calls.rbegin(); call != calls.rend(); ++call) backward.Ask(transaction, *call);
  std::vector<std::string> verdicts;
  for (const PlannedCall& call : calls) {
    verdicts.push_back(forward.Ask(transaction, call));
    Require(backward.Ask(transaction, call) == verdicts.back(),
            "the same verdict after all calls in either order: " + call.plan.opaque);
  }
  return verdicts;
}

void CheckNothingIsReadAgain(TransactionOnDevice& transaction, const Calls& calls, Judge& judge,
                             const std::vector<std::string>& verdicts) {
  for (size_t i = 0; i < calls.size(); ++i) {
    if (!UsesOnlyTables(calls[i]) || verdicts[i].starts_with("exception")) continue;
    const uint64_t calls_before = confd::CallCount();
    Require(judge.Ask(transaction, calls[i]) == verdicts[i],
            "the verdict of the first transaction: " + calls[i].plan.opaque);
    Require(confd::CallCount() == calls_before, "nothing is read again: " + calls[i].plan.opaque);
  }
}

void CheckCalls(const fuzz::Scenario& scenario, const SnapshotPtr& running,
                const SnapshotPtr& candidate, bool prints) {
  TransactionOnDevice transaction(running, candidate, scenario.has_short_output_name);
  Judge judge;
  Calls calls;
  RoutesRead routes_read;
  for (const fuzz::CallPlan& plan : scenario.calls) {
    if (scenario.is_large && calls.size() == kFewCalls) break;
    const auto call = transaction.Plan(plan);
    if (!call) continue;
    const std::string fresh = Judge().Ask(transaction, *call);
    const std::string used = judge.Ask(transaction, *call);
    if (prints) fprintf(stderr, "%s: %s\n", plan.opaque.c_str(), used.c_str());
    routes_read.Compare(*call, fresh, used);
    routes_read.Note(*call);
    calls.push_back(*call);
  }
  const std::vector<std::string> verdicts = CompareOrders(transaction, calls, judge);
  CheckNothingIsReadAgain(transaction, calls, judge, verdicts);
  TransactionOnDevice later(candidate, running, false);
  CheckNothingIsReadAgain(later, calls, judge, verdicts);
  later.Finish();
  transaction.Finish();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size > 512) return 0;  // 64 records
  const fuzz::Scenario scenario = fuzz::DecodeScenario({data, size});
  const bool prints = getenv("IPAV_FUZZ_PRINT") != nullptr;
  if (prints) {
    fprintf(stderr, "running %s\ncandidate %s\n", scenario.running.c_str(),
            scenario.candidate.c_str());
  }
  CheckCalls(scenario, store::Snapshot::FromText(tests::DataModel(), scenario.running),
             store::Snapshot::FromText(tests::DataModel(), scenario.candidate), prints);
  return 0;
}
