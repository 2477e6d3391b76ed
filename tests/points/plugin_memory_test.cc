// Every allocation of every validation point made to fail, one at a time, and the point called
// again on the same Config: the verdict is the one of a call that nothing disturbed.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <climits>
#include <cstdarg>
#include <cstdio>
#include <iostream>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include "confd_maapi.h"
#include "support/fault_cases.h"
#include "support/point_fixture.h"
#include "support/process_memory.h"

namespace {

// Of the walk that was not ended; `walk` is null when there is none.
maapi_cursor open_cursor{};

}  // namespace

// These definitions win over those of libconfd, for the module as well.

int maapi_get_next(maapi_cursor* mc) {
  static const auto original = reinterpret_cast<int (*)(maapi_cursor*)>(dlsym(RTLD_NEXT, __func__));
  struct Remember {  // also when an exception passes
    const maapi_cursor* cursor;
    ~Remember() { open_cursor = *cursor; }
  } const remember{mc};
  return original(mc);
}

void maapi_destroy_cursor(maapi_cursor* mc) {
  using Destroy = void (*)(maapi_cursor*);
  static const auto original = reinterpret_cast<Destroy>(dlsym(RTLD_NEXT, __func__));
  original(mc);
  open_cursor = {};
}

// Nothing fails during a walk over changes: an exception that passes it leaves the reported values
// behind. A walker keeps nothing for the next call.
int maapi_keypath_diff_iterate(int sock, int thandle, maapi_iterate_fn iter, int flags,
                               void* initstate, const char* fmtpath, ...) {
  static const auto original =
      reinterpret_cast<decltype(&maapi_keypath_diff_iterate)>(dlsym(RTLD_NEXT, __func__));
  va_list args;
  va_start(args, fmtpath);
  char path[100];
  vsnprintf(path, sizeof(path), fmtpath, args);
  va_end(args);
  const int left = std::exchange(tests::allocations_left, tests::kUnlimited);
  const int result = original(sock, thandle, iter, flags, initstate, "%s", path);
  tests::allocations_left = left;
  return result;
}

namespace tests {
namespace {

// What comes of a repeated read shows where numbers of addresses and routes matter: an OSPFv2
// record with one address too many, or a route too few, would let these pass.
std::vector<FaultCase> Cases() {
  std::vector<FaultCase> cases = FaultCases();
  cases.push_back({"OspfAddressAdded",
                   "ipv4_addr_prot_cross_validation",
                   "/config/interface/l3",
                   "",
                   [](Situation& s) { s.candidate.Find("l3", "lan-2").ipv4 = {"10.7.0.1/24"}; },
                   "10.7.0.1/24 cannot be added after interface is assigned to router ospf 2 vrf "
                   "red area 0 (0.0.0.0)",
                   {},
                   false});
  return cases;
}

class PluginMemory : public PointTest, public testing::WithParamInterface<FaultCase> {
 protected:
  struct Outcome {
    int allocations;  // that were made
    bool thrown;      // std::bad_alloc
    std::string verdict;
  };

  // One call of the point, of whose allocations the one behind the first `successes` fails.
  Outcome Call(confd::Keypath& keypath, int successes) {
    confd::TransactionContext context;
    std::string opaque = GetParam().point;
    Fill(context.get());
    context.get()->validate_opaque = opaque.data();
    confd_value_t value{};
    CONFD_SET_XMLTAG(&value, 0, 0);
    Outcome outcome{0, false, "accepted"};
    int result = 0;
    FailOneAllocationAfter(successes);
    try {
      result = LoadedModule().validate(context.get(), keypath.get(), &value);
    } catch (const std::bad_alloc&) {
      outcome.thrown = true;
    }
    outcome.allocations = successes - allocations_left;
    allocations_left = kUnlimited;
    if (result != 0) outcome.verdict = context.has_error() ? context.error() : "refused";
    return outcome;
  }

  // The reader of routes leaves its cursor open. It is destroyed here, in place of the reader.
  static void ExpectNoCursorButOfRoutes() {
    if (open_cursor.walk == nullptr) return;
    EXPECT_STRNE(GetParam().route_families, "") << "cursor left open";
    maapi_destroy_cursor(&open_cursor);
  }

  void FailEachIn(const Situation& situation, const std::string& verdict);
};

void PluginMemory::FailEachIn(const Situation& situation, const std::string& verdict) {
  Configure(situation.running, situation.candidate);
  confd::Keypath keypath(candidate(), GetParam().path);
  RenewConfig();
  Call(keypath, INT_MAX);  // what the platform keeps from its first use on
  RenewConfig();
  const Outcome undisturbed = Call(keypath, INT_MAX);
  ASSERT_EQ(undisturbed.verdict, verdict);
  int thrown = 0;
  for (int successes = 0; successes < undisturbed.allocations; ++successes) {
    SCOPED_TRACE("allocation " + std::to_string(successes) + " fails");
    RenewConfig();
    const Outcome failed = Call(keypath, successes);
    thrown += failed.thrown ? 1 : 0;
    if (!failed.thrown) {
      EXPECT_EQ(failed.verdict, verdict) << "it can do without";
    }
    ExpectNoCursorButOfRoutes();
    EXPECT_EQ(Call(keypath, INT_MAX).verdict, verdict) << "the next call reads again";
    EXPECT_EQ(open_cursor.walk, nullptr);
  }
  std::cout << GetParam() << ": " << undisturbed.allocations << " allocations, " << thrown
            << " threw\n";
}

TEST_P(PluginMemory, NextCallAfterAFailedAllocationJudgesAsEver) {
  if (GetParam().clean_too) FailEachIn(CleanSituation(), "accepted");
  Situation spoilt = CleanSituation();
  GetParam().spoil(spoilt);
  FailEachIn(spoilt, GetParam().refusal);
}

INSTANTIATE_TEST_SUITE_P(Points, PluginMemory, testing::ValuesIn(Cases()),
                         [](const auto& row) { return std::string(row.param.name); });

}  // namespace
}  // namespace tests
