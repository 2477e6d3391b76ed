// intf_vrf_validation on changes of configurations in the store: which are refused, and how.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <optional>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "support/device.h"
#include "support/point_fixture.h"

namespace tests {
namespace {

using testing::IsEmpty;

constexpr char kPoint[] = "intf_vrf_validation";
constexpr char kContainers[] = "/pm/binding/association";

struct ChangeCase {
  const char* name;
  Device running;
  Device candidate;
  std::string verdict;
};

std::ostream& operator<<(std::ostream& out, const ChangeCase& c) { return out << c.name; }

std::string RowName(const testing::TestParamInfo<ChangeCase>& row) { return row.param.name; }

class VrfChange : public PointTest, public testing::WithParamInterface<ChangeCase> {
 protected:
  void ExpectVerdict(const std::string& path) {
    Configure(GetParam().running, GetParam().candidate);
    EXPECT_EQ(Validate(kPoint, path), GetParam().verdict);
    EXPECT_THAT(TakeFaults(), IsEmpty());
  }
};

ConfiguredIntf Intf(const std::string& name) { return {.name = name}; }

ConfiguredIntf InVrf(const std::string& name, const std::string& vrf = "red") {
  return {.name = name, .vrf = vrf};
}

Ospfv3Entry InOspfv3(const std::string& name) { return {10, "0.0.0.1", name}; }

// An interface in OSPFv3 joins no VRF ------------------------------------------------------------

// {kind} stands for the kind of interface, {other} for the other one.
struct VrfSetCase {
  const char* name;
  std::vector<ConfiguredIntf> running;
  std::vector<ConfiguredIntf> candidate;
  std::vector<Ospfv3Entry> running_ospfv3;
  std::vector<Ospfv3Entry> candidate_ospfv3;
  std::optional<std::string> refused;  // name of the interface
};

std::ostream& operator<<(std::ostream& out, const VrfSetCase& c) { return out << c.name; }

constexpr std::nullopt_t kAccepted = std::nullopt;
const Ospfv3Entry kUses7 = InOspfv3("{kind}-7");
const VrfSetCase kVrfSetCases[] = {
    {"Set", {Intf("7")}, {InVrf("7")}, {kUses7}, {kUses7}, "7"},
    {"SetTogetherWithOspfv3", {Intf("7")}, {InVrf("7")}, {}, {kUses7}, "7"},
    {"SetAndOspfv3Removed", {Intf("7")}, {InVrf("7")}, {kUses7}, {}, kAccepted},
    {"SetToGlobal", {Intf("7")}, {InVrf("7", "global")}, {kUses7}, {kUses7}, "7"},
    {"SetToNothing", {Intf("7")}, {InVrf("7", "")}, {kUses7}, {kUses7}, "7"},
    {"Changed", {InVrf("7")}, {InVrf("7", "blue")}, {kUses7}, {kUses7}, "7"},
    {"CreatedWithVrf", {}, {InVrf("7")}, {kUses7}, {kUses7}, "7"},
    {"CreatedWithoutVrf", {}, {Intf("7")}, {kUses7}, {kUses7}, kAccepted},
    {"Deleted", {InVrf("7")}, {Intf("7")}, {kUses7}, {kUses7}, kAccepted},
    {"InterfaceDeleted", {InVrf("7")}, {}, {kUses7}, {kUses7}, kAccepted},
    // Only what changes is judged.
    {"WasSetBefore", {InVrf("7")}, {InVrf("7")}, {}, {kUses7}, kAccepted},
    {"NothingChanged", {InVrf("7")}, {InVrf("7")}, {kUses7}, {kUses7}, kAccepted},
    {"NoOspfv3", {Intf("7")}, {InVrf("7")}, {}, {}, kAccepted},
    {"OtherInterfaceInOspfv3", {Intf("7")}, {InVrf("7")}, {}, {InOspfv3("{kind}-8")}, kAccepted},
    {"OtherKindInOspfv3", {Intf("7")}, {InVrf("7")}, {}, {InOspfv3("{other}-7")}, kAccepted},
    {"LongerNameInOspfv3", {Intf("7")}, {InVrf("7")}, {}, {InOspfv3("{kind}-77")}, kAccepted},
    {"BlankForHyphenInOspfv3", {Intf("7")}, {InVrf("7")}, {}, {InOspfv3("{kind} 7")}, kAccepted},
    {"OtherCaseInOspfv3", {Intf("a")}, {InVrf("a")}, {}, {InOspfv3("{kind}-A")}, kAccepted},
    {"InSeveralProcesses",
     {Intf("7")},
     {InVrf("7")},
     {},
     {{1, "0.0.0.1", "{kind}-8"}, {2, "0.0.0.0", "{kind}-7"}, {3, "0.0.0.0", "{kind}-7"}},
     "7"},
    {"OneOfTwoChanges",
     {Intf("7"), Intf("8")},
     {InVrf("7"), InVrf("8")},
     {},
     {InOspfv3("{kind}-8")},
     "8"},
    {"FirstOfTwoRefusals",
     {Intf("7"), Intf("8")},
     {InVrf("8"), InVrf("7")},
     {},
     {InOspfv3("{kind}-8"), InOspfv3("{kind}-7")},
     "7"},
    {"OneRenamed", {InVrf("7")}, {InVrf("8")}, {kUses7}, {kUses7, InOspfv3("{kind}-8")}, "8"},
    // Names that mean something to XPath. Between its quotes only a quote does.
    {"DoubleQuote", {Intf("a\"b")}, {InVrf("a\"b")}, {}, {InOspfv3("{kind}-a\"b")}, "a\"b"},
    {"Brackets", {Intf("a]/b[c")}, {InVrf("a]/b[c")}, {}, {InOspfv3("{kind}-a]/b[c")}, "a]/b[c"},
    {"Braces", {Intf("{a}")}, {InVrf("{a}")}, {}, {InOspfv3("{kind}-{a}")}, "{a}"},
    {"Blank", {Intf("a b")}, {InVrf("a b")}, {}, {InOspfv3("{kind}-a b")}, "a b"},
    {"Conversions", {Intf("%s%n")}, {InVrf("%s%n")}, {}, {InOspfv3("{kind}-%s%n")}, "%s%n"},
    {"TwoByteCharacters", {Intf("ü")}, {InVrf("ü")}, {}, {InOspfv3("{kind}-ü")}, "ü"},
    {"Empty", {Intf("")}, {InVrf("")}, {}, {InOspfv3("{kind}-")}, ""},
    // Deliberate: an expression that does not parse finds nothing.
    {"Quote", {Intf("it's")}, {InVrf("it's")}, {}, {InOspfv3("{kind}-it's")}, kAccepted},
    {"QuoteAtTheEnd", {Intf("a'")}, {InVrf("a'")}, {}, {InOspfv3("{kind}-a'")}, kAccepted},
    // Deliberate: the name is part of the expression.
    {"NameIsACondition",
     {Intf("x' or '1'='1")},
     {InVrf("x' or '1'='1")},
     {},
     {kUses7},
     "x' or '1'='1"},
    {"NameIsAFalseCondition",
     {Intf("x' and '1'='2")},
     {InVrf("x' and '1'='2")},
     {},
     {kUses7},
     kAccepted},
    // A buffer of 1024 bytes.
    {"NameOf300Bytes",
     {Intf(std::string(300, 'n'))},
     {InVrf(std::string(300, 'n'))},
     {},
     {InOspfv3("{kind}-" + std::string(300, 'n'))},
     std::string(300, 'n')},
    {"NameOf1100Bytes",
     {Intf(std::string(1100, 'n'))},
     {InVrf(std::string(1100, 'n'))},
     {},
     {InOspfv3("{kind}-" + std::string(1100, 'n'))},
     kAccepted},
};

// The names with their marks replaced.
std::vector<Ospfv3Entry> Replaced(std::vector<Ospfv3Entry> entries, const std::string& kind,
                                  const std::string& other) {
  for (Ospfv3Entry& entry : entries) {
    for (const auto& [mark, with] : {std::pair("{kind}", kind), std::pair("{other}", other)}) {
      const size_t at = entry.name.find(mark);
      if (at != std::string::npos) entry.name.replace(at, std::strlen(mark), with);
    }
  }
  return entries;
}

class VrfSet : public PointTest, public testing::WithParamInterface<VrfSetCase> {
 protected:
  void ExpectVerdict(const std::string& kind, const std::string& other,
                     std::vector<ConfiguredIntf> Device::*interfaces) {
    const VrfSetCase& c = GetParam();
    Device running{.ospfv3 = Replaced(c.running_ospfv3, kind, other)};
    Device candidate{.ospfv3 = Replaced(c.candidate_ospfv3, kind, other)};
    running.*interfaces = c.running;
    candidate.*interfaces = c.candidate;
    Configure(running, candidate);
    EXPECT_EQ(Validate(kPoint, "/config/interface/" + kind),
              c.refused ? kind + " " + *c.refused +
                              " is configured in OSPFv3 and cannot be associated with a VRF"
                        : "accepted");
    EXPECT_THAT(TakeFaults(), IsEmpty());
  }
};

TEST_P(VrfSet, OfAnL3Interface) { ExpectVerdict("l3", "loopback", &Device::l3); }
TEST_P(VrfSet, OfALoopback) { ExpectVerdict("loopback", "l3", &Device::loopback); }

INSTANTIATE_TEST_SUITE_P(Changes, VrfSet, testing::ValuesIn(kVrfSetCases),
                         [](const auto& row) { return std::string(row.param.name); });

// Where the buffer ends. Behind the name come "']/" and the name of the leaf.
struct LengthCase {
  const char* name;
  const char* kind;
  size_t length;
  bool found;
};

std::ostream& operator<<(std::ostream& out, const LengthCase& c) { return out << c.name; }

const LengthCase kLengthCases[] = {
    {"L3JustFits", "l3", 961, true},
    {"L3OneByteIsCutOff", "l3", 962, false},
    // Deliberate: what is left is an expression, and finds the entry in place of the leaf.
    {"L3CutBehindTheBracket", "l3", 979, true},
    {"L3CutInTheBracket", "l3", 980, false},
    {"L3CutInTheName", "l3", 982, false},
    {"LoopbackJustFits", "loopback", 955, true},
    {"LoopbackOneByteIsCutOff", "loopback", 956, false},
    {"LoopbackCutBehindTheBracket", "loopback", 973, true},
    {"LoopbackCutInTheBracket", "loopback", 974, false},
};

class LongName : public PointTest, public testing::WithParamInterface<LengthCase> {};

TEST_P(LongName, IsFoundWhileTheExpressionParses) {
  const std::string kind = GetParam().kind;
  const std::string name(GetParam().length, 'n');
  Device device{.ospfv3 = {InOspfv3(kind + "-" + name)}};
  device.Interfaces(kind) = {InVrf(name)};
  Configure(device);
  EXPECT_EQ(Validate(kPoint, "/config/interface/" + kind),
            GetParam().found
                ? kind + " " + name + " is configured in OSPFv3 and cannot be associated with a VRF"
                : "accepted");
}

INSTANTIATE_TEST_SUITE_P(Lengths, LongName, testing::ValuesIn(kLengthCases),
                         [](const auto& row) { return std::string(row.param.name); });

// A VRF keeps OSPFv3 away -------------------------------------------------------------------------

// An empty candidate list of OSPFv3 interfaces has no entry to be called for.
const Ospfv3Entry kOther = {99, "0.0.0.0", "other"};

ChangeCase Ospfv3Created(const char* name, const std::string& ospfv3_name, const Device& device,
                         const std::string& verdict) {
  Device running = device;
  running.ospfv3 = {kOther};
  Device candidate = device;
  candidate.ospfv3 = {kOther, InOspfv3(ospfv3_name)};
  return {name, running, candidate, verdict};
}

std::string RefusedL3(const std::string& name) {
  return "l3 " + name + " is associated with a VRF and cannot be configured in OSPFv3";
}

std::string RefusedLoopback(const std::string& name) {
  return "loopback " + name + " is associated with a VRF and cannot be configured in OSPFv3";
}

const std::string kLong300(300, 'n');
const std::string kLong1100(1100, 'n');

const ChangeCase kOspfv3Cases[] = {
    Ospfv3Created("L3InVrf", "l3-7", {.l3 = {InVrf("7")}}, RefusedL3("7")),
    Ospfv3Created("L3InGlobalByName", "l3-7", {.l3 = {InVrf("7", "global")}}, RefusedL3("7")),
    Ospfv3Created("L3InNoVrf", "l3-7", {.l3 = {Intf("7")}}, "accepted"),
    Ospfv3Created("NoSuchL3", "l3-7", {.l3 = {InVrf("8")}}, "accepted"),
    Ospfv3Created("LoopbackInVrf", "loopback-5", {.loopback = {InVrf("5")}}, RefusedLoopback("5")),
    Ospfv3Created("LoopbackInNoVrf", "loopback-5", {.loopback = {Intf("5")}}, "accepted"),
    Ospfv3Created("L3OfThatNameInVrf", "loopback-5", {.l3 = {InVrf("5")}, .loopback = {Intf("5")}},
                  "accepted"),
    Ospfv3Created("OtherKind", "mgmt-0", {.l3 = {InVrf("0")}, .loopback = {InVrf("0")}},
                  "accepted"),
    Ospfv3Created("NoKind", "7", {.l3 = {InVrf("7")}, .loopback = {InVrf("7")}}, "accepted"),
    Ospfv3Created("Empty", "", {.l3 = {InVrf("")}, .loopback = {InVrf("")}}, "accepted"),
    Ospfv3Created("Display", "l3 7", {.l3 = {InVrf("7")}}, "accepted"),
    Ospfv3Created("UpperCase", "L3-7", {.l3 = {InVrf("7")}}, "accepted"),
    // Deliberate: the mark of the kind counts anywhere in the name.
    Ospfv3Created("MarkInTheMiddle", "xl3-7", {.l3 = {InVrf("7")}}, RefusedL3("7")),
    Ospfv3Created("LoopbackMarkInTheMiddle", "my-loopback-5", {.loopback = {InVrf("5")}},
                  RefusedLoopback("5")),
    Ospfv3Created("MarkTwice", "l3-l3-7", {.l3 = {InVrf("l3-7")}}, RefusedL3("l3-7")),
    Ospfv3Created("OnlyTheFirstMarkCounts", "l3-l3-7", {.l3 = {InVrf("7")}}, "accepted"),
    // Deliberate: with both marks it is an L3 interface, whichever comes first.
    Ospfv3Created("LoopbackMarkBeforeL3Mark", "loopback-l3-7",
                  {.l3 = {InVrf("7")}, .loopback = {InVrf("l3-7")}}, RefusedL3("7")),
    Ospfv3Created("LoopbackMarkBeforeL3MarkAsLoopback", "loopback-l3-7",
                  {.l3 = {Intf("7")}, .loopback = {InVrf("l3-7")}}, "accepted"),
    Ospfv3Created("L3MarkBeforeLoopbackMark", "l3-loopback-5",
                  {.l3 = {InVrf("loopback-5")}, .loopback = {InVrf("5")}}, RefusedL3("loopback-5")),
    Ospfv3Created("L3MarkBeforeLoopbackMarkAsLoopback", "l3-loopback-5", {.loopback = {InVrf("5")}},
                  "accepted"),
    Ospfv3Created("NothingBehindTheMark", "l3-", {.l3 = {InVrf("")}}, RefusedL3("")),
    // Names that mean something to a path. Deliberate: a path that does not parse finds nothing.
    Ospfv3Created("Quote", "l3-it's", {.l3 = {InVrf("it's")}}, RefusedL3("it's")),
    Ospfv3Created("DoubleQuote", "l3-a\"b", {.l3 = {InVrf("a\"b")}}, RefusedL3("a\"b")),
    Ospfv3Created("InDoubleQuotes", "l3-\"a\"", {.l3 = {InVrf("a")}}, RefusedL3("\"a\"")),
    Ospfv3Created("InDoubleQuotesInTheTable", "l3-\"a\"", {.l3 = {InVrf("\"a\"")}}, "accepted"),
    Ospfv3Created("Brackets", "l3-a]b[", {.l3 = {InVrf("a]b[")}}, RefusedL3("a]b[")),
    Ospfv3Created("Brace", "l3-a{b", {.l3 = {InVrf("a{b")}}, RefusedL3("a{b")),
    Ospfv3Created("BraceAndSlash", "l3-a}/b", {.l3 = {InVrf("a}/b")}}, "accepted"),
    Ospfv3Created("Blank", "l3-a b", {.l3 = {InVrf("a b")}}, RefusedL3("a b")),
    Ospfv3Created("Conversions", "l3-%s%n", {.l3 = {InVrf("%s%n")}}, RefusedL3("%s%n")),
    Ospfv3Created("NameOf300Bytes", "l3-" + kLong300, {.l3 = {InVrf(kLong300)}},
                  RefusedL3(kLong300)),
    Ospfv3Created("NameOf1100Bytes", "loopback-" + kLong1100, {.loopback = {InVrf(kLong1100)}},
                  RefusedLoopback(kLong1100)),
    // Other changes.
    {"VrfSetTogetherWithOspfv3",
     {.l3 = {Intf("7")}, .ospfv3 = {kOther}},
     {.l3 = {InVrf("7")}, .ospfv3 = {kOther, InOspfv3("l3-7")}},
     RefusedL3("7")},
    {"VrfDeletedTogetherWithOspfv3",
     {.l3 = {InVrf("7")}, .ospfv3 = {kOther}},
     {.l3 = {Intf("7")}, .ospfv3 = {kOther, InOspfv3("l3-7")}},
     "accepted"},
    {"Deleted",
     {.l3 = {InVrf("7")}, .ospfv3 = {kOther, InOspfv3("l3-7")}},
     {.l3 = {InVrf("7")}, .ospfv3 = {kOther}},
     "accepted"},
    {"IndexChanged",
     {.l3 = {InVrf("7")}, .ospfv3 = {kOther, {10, "0.0.0.1", "l3-7", 1}}},
     {.l3 = {InVrf("7")}, .ospfv3 = {kOther, {10, "0.0.0.1", "l3-7", 2}}},
     "accepted"},
    // Another process or area makes another entry.
    {"ProcessChanged",
     {.l3 = {InVrf("7")}, .ospfv3 = {kOther, {10, "0.0.0.1", "l3-7"}}},
     {.l3 = {InVrf("7")}, .ospfv3 = {kOther, {11, "0.0.0.1", "l3-7"}}},
     RefusedL3("7")},
    {"AreaChanged",
     {.l3 = {InVrf("7")}, .ospfv3 = {kOther, {10, "0.0.0.1", "l3-7"}}},
     {.l3 = {InVrf("7")}, .ospfv3 = {kOther, {10, "0.0.0.2", "l3-7"}}},
     RefusedL3("7")},
    {"FirstOfTwoRefusals",
     {.l3 = {InVrf("7")}, .loopback = {InVrf("5")}, .ospfv3 = {kOther}},
     {.l3 = {InVrf("7")},
      .loopback = {InVrf("5")},
      .ospfv3 = {kOther, {2, "0.0.0.1", "l3-7"}, {1, "0.0.0.1", "loopback-5"}}},
     RefusedLoopback("5")},
};

class Ospfv3Change : public VrfChange {};

TEST_P(Ospfv3Change, IsJudgedAsListed) {
  ExpectVerdict("/internal/ospfv3-interface-l3{99 0.0.0.0 other}" + std::string(kContainers));
}

INSTANTIATE_TEST_SUITE_P(Changes, Ospfv3Change, testing::ValuesIn(kOspfv3Cases), RowName);

}  // namespace
}  // namespace tests
