// What message_table_test rests on: reading the document, reading the sources, comparing texts.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ostream>
#include <stdexcept>
#include <string>
#include <vector>

#include "message_table.h"
#include "source_messages.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

struct MatchCase {
  const char* name;
  const char* message;
  const char* text;
  bool matches;
};

std::ostream& operator<<(std::ostream& out, const MatchCase& row) { return out << row.name; }

const MatchCase kMatches[] = {
    {"NoPlaceholder", "Lib context is null!", "Lib context is null!", true},
    {"OneBlankMore", "a is b", "a  is b", false},
    {"OneBlankLess", "a  is b", "a is b", false},
    {"SomethingInFront", "a is b", "x a is b", false},
    {"SomethingBehind", "a is b", "a is b.", false},
    {"FullStopIsNoWildcard", "a is b.", "a is bx", false},
    {"OtherCase", "a is b", "A is b", false},
    {"BracketsAndStars", "(a) * [b] {c} ?+^$|\\", "(a) * [b] {c} ?+^$|\\", true},
    {"Interface", "<interface> x", "l3 lan-1 x", true},
    {"InterfaceOfNoKind", "<interface> x", "l4 lan-1 x", false},
    {"InterfaceWithoutName", "<interface> x", "l3 x", false},
    {"Name", "<name> x", "wan 1 x", true},
    {"NameEmpty", "a <name> x", "a  x", false},
    {"Vrf", "vrf <vrf> x", "vrf red x", true},
    {"VrfEmpty", "vrf <vrf> x", "vrf  x", true},
    {"VrfMissing", "vrf <vrf> x", "vrf x", false},
    {"Ipv4", "<ipv4>", "255.249.199.0", true},
    {"Ipv4Octet256", "<ipv4>", "10.0.0.256", false},
    {"Ipv4LeadingZero", "<ipv4>", "10.0.0.01", false},
    {"Ipv4WithLength", "<ipv4>", "10.0.0.1/8", false},
    {"Ipv4IsNoIpv6", "<ipv6>", "10.0.0.1", false},
    {"Ipv6", "<ipv6>", "2001:db8::1", true},
    {"Ipv6Unspecified", "<ipv6>", "::", true},
    {"Ipv6Mapped", "<ipv6>", "::ffff:192.0.2.1", true},
    {"Ipv6Capitals", "<ipv6>", "2001:DB8::1", false},
    {"Ipv6IsNoIpv4", "<ipv4>", "2001:db8::1", false},
    {"Length128", "/<length>", "/128", true},
    {"Length129", "/<length>", "/129", false},
    {"Length0", "/<length>", "/0", true},
    {"LengthMissing", "/<length>", "/", false},
    {"Count", "<count> x", "257 x", true},
    {"CountNegative", "<count> x", "-1 x", false},
    {"Process", "ospf <process>", "ospf 4294967295", true},
    {"ProcessNegative", "ospf <process>", "ospf -1", false},
    {"SignedProcess", "ospfv3 <signed process>", "ospfv3 -1", true},
    {"SignedProcessNoNumber", "ospfv3 <signed process>", "ospfv3 -", false},
    {"Area", "area <area> (<dotted>)", "area 1 (0.0.0.1)", true},
    {"AreaWithoutDotted", "area <area> (<dotted>)", "area 1 (1)", false},
    {"Vlan", "vlan <vlan>", "vlan 4094", true},
    {"VlanHexadecimal", "vlan <vlan>", "vlan 0x10", false},
};

class MessageMatch : public testing::TestWithParam<MatchCase> {};

TEST_P(MessageMatch, OfAText) {
  EXPECT_EQ(Matches(GetParam().message, GetParam().text), GetParam().matches);
}

INSTANTIATE_TEST_SUITE_P(Rows, MessageMatch, testing::ValuesIn(kMatches),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(MessageMatch, UnknownPlaceholderIsAnError) {
  EXPECT_THROW(Matches("<colour> x", "red x"), std::runtime_error);
}

struct CollectCase {
  const char* name;
  const char* source;
  const char* message;  // as it is printed; null: the source is not understood
};

std::ostream& operator<<(std::ostream& out, const CollectCase& row) { return out << row.name; }

const CollectCase kCollected[] = {
    {"Literal", R"(error_ = "a b.";)", "f:1: a b."},
    {"FilledIn", R"(error_ = n + " a " + to_string(x + 1) + " b";)", "f:1: ... a ... b"},
    {"OpenEnd", R"(error_ = "a " + n;)", "f:1: a ..."},
    {"OverTwoLines", "error_ = \"a \"\n  \"b\";", "f:1: a b"},
    {"Constant", "char kText[] = \"a b\";\nerror_ = kText;", "f:2: a b"},
    {"EscapedQuote", R"(error_ = "a \"b\"";)", "f:1: a \"b\""},
    {"BehindAComment", "// it's \"x\nerror_ = \"a\";", "f:2: a"},
    {"BehindACharacter", R"(c = '"'; error_ = "a";)", "f:1: a"},
    {"SetDirectly", R"(confd_trans_seterr(t, "a b");)", "f:1: a b"},
    {"SetThroughAFormat", R"(confd_trans_seterr(t, "%s", "a b");)", "f:1: a b"},
    {"SetWithNumbers", R"_(confd_trans_seterr(t, "a %d b (%s)", x(1), y);)_", "f:1: a ... b (...)"},
    {"OpenAtBothEnds", R"(confd_trans_seterr(t, "%s b %u", x, y);)", "f:1: ... b ..."},
    {"Appended", R"(error_ += "a";)", nullptr},
    {"AppendedByCall", R"(error_.append("a");)", nullptr},
    {"GivenAway", "snprintf(error_, 5, x);", nullptr},
    {"FromElsewhere", "error_ = Text();", nullptr},
    {"SetFromElsewhere", R"(confd_trans_seterr(t, "%s", text.c_str());)", nullptr},
    {"SetToAVariable", "confd_trans_seterr(t, text);", nullptr},
    {"SetExtended", R"(confd_trans_seterr_extended(t, 1, 2, "a");)", nullptr},
};

class Collected : public testing::TestWithParam<CollectCase> {};

TEST_P(Collected, FromASource) {
  const CollectCase& row = GetParam();
  if (row.message == nullptr) {
    EXPECT_THROW(CollectMessages("f", row.source), std::runtime_error);
    return;
  }
  const std::vector<SourceMessage> messages = CollectMessages("f", row.source);
  ASSERT_EQ(messages.size(), 1u);
  EXPECT_EQ(testing::PrintToString(messages[0]), row.message);
}

INSTANTIATE_TEST_SUITE_P(Rows, Collected, testing::ValuesIn(kCollected),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(Collected, NothingFromReads) {
  EXPECT_THAT(CollectMessages("f", R"(std::string error_; if (error_.empty()) return;
                                      confd_trans_seterr(t, "%s", c.error_.c_str());)"),
              IsEmpty());
}

struct MadeByCase {
  const char* name;
  const char* source;
  const char* text;
  bool is_made;
};

std::ostream& operator<<(std::ostream& out, const MadeByCase& row) { return out << row.name; }

const MadeByCase kMadeBy[] = {
    {"Whole", R"(error_ = "a b";)", "a b", true},
    {"SomethingBehind", R"(error_ = "a b";)", "a b.", false},
    {"SomethingInFront", R"(error_ = "a b";)", "x a b", false},
    {"FilledInFront", R"(error_ = n + " a";)", "<name> a", true},
    {"FilledInBehind", R"(error_ = "a " + n;)", "a <name>", true},
    {"PieceMissing", R"(error_ = n + " a " + m + " b";)", "<name> a <name>", false},
    {"OtherOrder", R"(error_ = n + " a " + m + " b";)", "<name> b <name> a", false},
    {"LastPieceTwice", R"(error_ = n + " a" + m + " a";)", "<name> a<name> a", true},
    {"ShorterThanThePiece", R"(error_ = n + "abc";)", "bc", false},
};

class MadeBy : public testing::TestWithParam<MadeByCase> {};

TEST_P(MadeBy, AnExpression) {
  const std::vector<SourceMessage> messages = CollectMessages("f", GetParam().source);
  ASSERT_EQ(messages.size(), 1u);
  EXPECT_EQ(IsMadeBy(messages[0], GetParam().text), GetParam().is_made);
}

INSTANTIATE_TEST_SUITE_P(Rows, MadeBy, testing::ValuesIn(kMadeBy),
                         [](const auto& row) { return std::string(row.param.name); });

struct BadTable {
  const char* name;
  const char* markdown;
};

std::ostream& operator<<(std::ostream& out, const BadTable& row) { return out << row.name; }

const BadTable kBadTables[] = {
    {"UnknownHeader", "| Message | Case |\n"},
    {"BelowNoPoint", "## Names\n| Message | Rule | Example |\n"},
    {"BelowTheNextHeading", "### `names`\n## Other\n| Message | Rule | Example |\n"},
    {"MessageIsNoCode",
     "### `names`\n| Message | Rule | Example |\n|---|---|---|\n| a | b | `c` |\n"},
    {"WithoutExample", "### `names`\n| Message | Rule | Example |\n|---|---|---|\n| `a` | b | |\n"},
    {"TestWithoutFile", "| Message | Why not | Shown by |\n|---|---|---|\n| `a` | b | `C.D` |\n"},
};

class BadTableText : public testing::TestWithParam<BadTable> {};

TEST_P(BadTableText, IsAnError) {
  EXPECT_THROW(ReadMessageTable(GetParam().markdown), std::runtime_error);
}

INSTANTIATE_TEST_SUITE_P(Rows, BadTableText, testing::ValuesIn(kBadTables),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(MessageTableText, IsRead) {
  const MessageTable table = ReadMessageTable(
      "| Point | Asked when | Function |\n|---|---|---|\n| [`names`](#names) | x | `f` |\n\n"
      "### `names`\n\n| Message | Rule | Example |\n|---|---|---|\n"
      "| `too <count>` | at most 1 | `ipvald check a.json` |\n");
  EXPECT_THAT(table.points, ElementsAre("names"));
  ASSERT_EQ(table.messages.size(), 1u);
  EXPECT_EQ(table.messages[0].point, "names");
  EXPECT_EQ(table.messages[0].message, "too <count>");
  EXPECT_THAT(table.messages[0].command, ElementsAre("ipvald", "check", "a.json"));
  EXPECT_EQ(table.messages[0].line, 9);
}

}  // namespace
