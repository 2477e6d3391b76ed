// Every platform call of every validation point made to fail, one at a time, and every value handed
// out in another type, on a configuration that has something for each of them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <boost/system/system_error.hpp>
#include <csignal>
#include <iostream>
#include <map>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include "confd/call_count.h"
#include "confd/watch_calls.h"
#include "support/fault_cases.h"
#include "support/fault_model.h"
#include "support/point_fixture.h"

namespace tests {
namespace {

using testing::AllOf;
using testing::HasSubstr;

auto EndsAt(const std::string& place) {
  const std::vector<DocumentedAssertion>& all = DocumentedAssertions();
  const auto assertion =
      std::find_if(all.begin(), all.end(), [&place](const auto& a) { return a.place == place; });
  if (assertion == all.end()) throw std::logic_error(place + " is not documented");
  return AllOf(HasSubstr(": src/lib/" + place + ": "),
               HasSubstr(std::string(assertion->function) + "("),
               HasSubstr(": Assertion `" + std::string(assertion->text) + "' failed.\n"));
}

class PluginFaults : public PointTest, public testing::WithParamInterface<FaultCase> {
 public:
  static void TearDownTestSuite() {
    Figures total;
    for (const auto& [point, figures] : figures_) {
      Print(point, figures);
      total.injected += figures.injected;
      total.other_verdicts += figures.other_verdicts;
      total.ends += figures.ends;
      total.exceptions += figures.exceptions;
    }
    Print("all points", total);
  }

 protected:
  struct Figures {
    size_t injected = 0;
    size_t other_verdicts = 0;
    size_t ends = 0;
    size_t exceptions = 0;
  };

  static void Print(const std::string& what, const Figures& figures) {
    std::cout << what << ": " << figures.injected << " faults injected; " << figures.other_verdicts
              << " gave another verdict, " << figures.ends << " ended the process, "
              << figures.exceptions << " threw\n";
  }

  // What came of a fault; compared once all of them are through, as there is one transaction at a
  // time.
  struct Outcome {
    std::string fault;
    std::string verdict;
    bool walk_follows;
  };

  void Begin(const Situation& situation) { Configure(situation.running, situation.candidate); }

  // One call of the point on a fresh Config: verdict, or type of the exception.
  std::string Judge(confd::Keypath& keypath) {
    RenewConfig();
    try {
      return Validate(GetParam().point, keypath);
    } catch (const boost::system::system_error&) {
      return "boost::system::system_error";
    } catch (const std::invalid_argument&) {
      return "std::invalid_argument";
    }
  }

  // The point, in a child process, ends at that assertion and nowhere else.
  void ExpectEnd(confd::Keypath& keypath, const std::string& place) {
    EXPECT_EXIT(Judge(keypath), testing::KilledBySignal(SIGABRT), EndsAt(place));
    reached_.insert(place);
    ++figures_[GetParam().point].ends;
  }

  void ExpectBalance(int64_t values_before) {
    EXPECT_EQ(confd::OutstandingValues(), values_before) << "values not released";
    const auto count = [this](const std::string& function) {
      return std::count_if(calls().begin(), calls().end(),
                           [&](const std::string& call) { return call.starts_with(function); });
    };
    EXPECT_EQ(count("maapi_init_cursor"), count("maapi_destroy_cursor")) << "cursors left open";
  }

  void InjectInto(const Situation& situation, const std::string& original);
  void InjectCalls(const Situation& situation, const std::string& original,
                   confd::Keypath& keypath);
  void InjectKeypath(const std::string& original, confd::Keypath& keypath);
  void CompareWithEquivalents(const std::string& original, confd::Keypath& keypath);

  std::set<std::string> reached_;
  // Outcomes by the two configurations that are equivalent to the fault.
  std::map<std::pair<std::string, std::string>, std::vector<Outcome>> outcomes_;

 private:
  static inline std::map<std::string, Figures> figures_;
};

void PluginFaults::InjectCalls(const Situation& situation, const std::string& original,
                               confd::Keypath& keypath) {
  const std::vector<std::string> sequence = calls();
  const std::vector<Fault> faults = FaultsOf(sequence);
  for (size_t i = 0; i < faults.size(); ++i) {
    const Fault& fault = faults[i];
    const auto position = static_cast<int>(fault.position);
    const bool is_failure = fault.request.action == confd::CallAction::kFail;
    const std::string name =
        "call " + std::to_string(position) + ", " + sequence[fault.position] +
        (is_failure ? " fails" : " has a wrong type " + std::to_string(fault.request.position));
    SCOPED_TRACE(name);
    ++figures_[GetParam().point].injected;
    const Expectation expected =
        Expect(situation, sequence, fault, GetParam().route_families, "lan-3");
    DisturbCall(position, fault.request);
    if (!expected.assertion.empty()) {
      ExpectEnd(keypath, expected.assertion);
      DisturbCall(-1, confd::CallAction::kProceed);
    } else {
      const int64_t values_before = confd::OutstandingValues();
      const std::string verdict = Judge(keypath);
      ASSERT_GT(calls().size(), fault.position);
      EXPECT_EQ(calls()[fault.position], sequence[fault.position]);
      EXPECT_NE(verdict, "refused") << "a refusal without a text";
      ExpectBalance(values_before);
      if (!expected.exception.empty()) {
        EXPECT_EQ(verdict, expected.exception);
        ++figures_[GetParam().point].exceptions;
      } else {
        if (verdict != original) ++figures_[GetParam().point].other_verdicts;
        outcomes_[{expected.equivalent.running.Json(), expected.equivalent.candidate.Json()}]
            .push_back({name, verdict, expected.walk_follows});
      }
    }
    // The session that was made to stay open is the device's affair.
    if (sequence[fault.position] == "cdb_end_session") Begin(situation);
    // After all faults of one call nothing is left of them.
    if (i + 1 < faults.size() && faults[i + 1].position == fault.position) continue;
    EXPECT_EQ(Judge(keypath), original) << "without the fault";
    EXPECT_EQ(calls(), sequence);
  }
}

// Elements of the keypath that is handed in.
void PluginFaults::InjectKeypath(const std::string& original, confd::Keypath& keypath) {
  const std::map<std::string, std::map<int, std::string>> tested = {
      {"intf_vrf_validation", {{0, "config:52"}}},
      {"ipv4_addr_validation", {{0, "config:52"}}},
      {"ipv6_addr_validation", {{0, "config:52"}}},
      {"validate_ipv6_nd_ra_interval", {{3, "validate_nd_ra:32"}, {4, "validate_nd_ra:33"}}},
      {"validate_ipv6_nd_ra_lifetime", {{3, "validate_nd_ra:84"}, {4, "validate_nd_ra:85"}}},
      {"lower_layer_prot_cross_validation", {{1, "validate_ip_addr_cross_ospf:53"}}},
  };
  const auto of_point = tested.find(GetParam().point);
  for (int element = 0; element < keypath.get()->len; ++element) {
    SCOPED_TRACE("element " + std::to_string(element) + " of the keypath");
    std::string place;
    if (of_point != tested.end() && of_point->second.contains(element)) {
      place = of_point->second.at(element);
    }
    // The walkers are chosen by the length first.
    if (GetParam().point == std::string("intf_vrf_validation") && keypath.get()->len == 6 &&
        element == 4) {
      place = "validate_intf_vrf:237";
    }
    ++figures_[GetParam().point].injected;
    confd_value_t& value = keypath.get()->v[element][0];
    const confd_vtype type = value.type;
    value.type = C_DOUBLE;
    if (place.empty()) {
      EXPECT_EQ(Judge(keypath), original);
    } else if (place == "validate_intf_vrf:237" && original == GetParam().refusal &&
               original.find("divergent") != std::string::npos) {
      EXPECT_EQ(Judge(keypath), original) << "the tables come first";
    } else {
      ExpectEnd(keypath, place);
    }
    value.type = type;
  }
}

void PluginFaults::CompareWithEquivalents(const std::string& original, confd::Keypath& keypath) {
  const bool walks = GetParam().point == std::string("intf_vrf_validation");
  // What the walk says that a point makes once its tables are in order. Where the tables are at
  // fault it is the one over OSPFv2 interfaces, which refuses nothing.
  const bool tables_refuse = original.find("divergent") != std::string::npos;
  const std::string of_walk = tables_refuse ? "accepted" : original;
  for (const auto& [configurations, outcomes] : outcomes_) {
    const auto& [running, candidate] = configurations;
    // The verdict of the tables alone: nothing changes, so nothing is walked.
    std::string of_tables;
    std::string of_all;
    for (const Outcome& outcome : outcomes) {
      const bool tables_only = walks && outcome.walk_follows;
      std::string& verdict = tables_only ? of_tables : of_all;
      if (verdict.empty()) {
        Configure(tables_only ? candidate : running, candidate);
        verdict = Judge(keypath);
      }
      const bool decided = !tables_only || verdict != "accepted";
      EXPECT_EQ(outcome.verdict, decided ? verdict : of_walk) << outcome.fault;
    }
  }
}

void PluginFaults::InjectInto(const Situation& situation, const std::string& original) {
  outcomes_.clear();
  Begin(situation);
  confd::Keypath keypath(candidate(), GetParam().path);
  ASSERT_EQ(Judge(keypath), original);
  InjectCalls(situation, original, keypath);
  InjectKeypath(original, keypath);
  CompareWithEquivalents(original, keypath);
}

TEST_P(PluginFaults, AmountToMissingValues) {
  if (GetParam().clean_too) InjectInto(CleanSituation(), "accepted");
  Situation spoilt = CleanSituation();
  GetParam().spoil(spoilt);
  InjectInto(spoilt, GetParam().refusal);
  EXPECT_EQ(reached_, GetParam().assertions);
}

INSTANTIATE_TEST_SUITE_P(Points, PluginFaults, testing::ValuesIn(FaultCases()),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(PluginFaultCases, TogetherReachEveryDocumentedAssertion) {
  std::set<std::string> documented;
  for (const DocumentedAssertion& assertion : DocumentedAssertions())
    documented.insert(assertion.place);
  std::set<std::string> reached;
  std::set<std::string> points;
  for (const FaultCase& row : FaultCases()) {
    reached.insert(row.assertions.begin(), row.assertions.end());
    points.insert(row.point);
  }
  EXPECT_EQ(reached, documented);
  EXPECT_EQ(points.size(), 11u);
}

}  // namespace
}  // namespace tests
