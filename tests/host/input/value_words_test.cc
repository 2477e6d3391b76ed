// What is said of each type: what its values are, why a text is none, and how JSON writes one.
#include "value_words.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>

#include "host/input/small_model.h"

namespace ipvald {
namespace {

const lysc_node* Leaf(const std::string& name) {
  return lys_find_path(tests::SmallModel(), nullptr, ("/small:types/" + name).c_str(), 0);
}

struct TypeCase {
  const char* leaf;
  JsonForm form;
  std::string values;
};

std::ostream& operator<<(std::ostream& out, const TypeCase& row) { return out << row.leaf; }

const TypeCase kTypes[] = {
    {"int8", JsonForm::kNumber, "a whole number from -128 to 127"},
    {"int16", JsonForm::kNumber, "a whole number from -32768 to 32767"},
    {"int32", JsonForm::kNumber, "a whole number from -2147483648 to 2147483647"},
    {"int64", JsonForm::kString, "a whole number from -9223372036854775808 to 9223372036854775807"},
    {"uint8", JsonForm::kNumber, "a whole number from 0 to 255"},
    {"uint16", JsonForm::kNumber, "a whole number from 0 to 65535"},
    {"uint32", JsonForm::kNumber, "a whole number from 0 to 4294967295"},
    {"uint64", JsonForm::kString, "a whole number from 0 to 18446744073709551615"},
    {"ranges", JsonForm::kNumber, "a whole number from -5 to -1 or 7 or from 10 to 20"},
    {"own-words", JsonForm::kNumber, "a whole number from 1 to 4094"},
    {"boolean", JsonForm::kBoolean, "true or false"},
    {"empty", JsonForm::kEmpty, "no value"},
    {"one-word", JsonForm::kString, "on"},
    {"two-words", JsonForm::kString, "on or off"},
    {"twelve-words", JsonForm::kString, "a, b, c, d, e, f, g, h, i, j, k or l"},
    {"thirteen-words", JsonForm::kString, "a, b, c, d, e, f, g, h, i, j, k, l or another of 13"},
    {"ipv4", JsonForm::kString, "an IPv4 address such as 192.0.2.1"},
    {"ipv6", JsonForm::kString, "an IPv6 address such as 2001:db8::1"},
    {"ipv4-prefix", JsonForm::kString, "a prefix such as 192.0.2.0/24"},
    {"ipv6-prefix", JsonForm::kString, "a prefix such as 2001:db8::/32"},
    {"text", JsonForm::kString, "a text"},
    {"decimal", JsonForm::kString, "a text"},
    {"bits", JsonForm::kString, "a text"},
    {"binary", JsonForm::kString, "a text"},
    {"identity", JsonForm::kString, "a text"},
    {"instance", JsonForm::kString, "a text"},
    {"union", JsonForm::kAny, "a text"},
    {"number-ref", JsonForm::kNumber, "a whole number from 0 to 255"},
    {"ref-ref", JsonForm::kNumber, "a whole number from 0 to 255"},
    {"identity-ref", JsonForm::kString, "a text"},
};

class Type : public testing::TestWithParam<TypeCase> {};

TEST_P(Type, IsDescribed) {
  const lysc_node* leaf = Leaf(GetParam().leaf);
  ASSERT_NE(leaf, nullptr);
  EXPECT_EQ(JsonFormOf(leaf), GetParam().form);
  EXPECT_EQ(ValuesOf(leaf), GetParam().values);
}

std::string WithoutHyphens(std::string name) {
  std::erase(name, '-');
  return name;
}

INSTANTIATE_TEST_SUITE_P(Types, Type, testing::ValuesIn(kTypes),
                         [](const auto& row) { return WithoutHyphens(row.param.leaf); });

struct ValueCase {
  const char* name;
  const char* leaf;
  std::string text;
  std::string fault;      // "" for a value
  std::string canonical;  // of a value
};

std::ostream& operator<<(std::ostream& out, const ValueCase& row) { return out << row.name; }

const ValueCase kValues[] = {
    {"BelowInt8", "int8", "-129", ", but takes a whole number from -128 to 127", ""},
    {"LowestInt8", "int8", "-128", "", "-128"},
    {"HighestInt8", "int8", "127", "", "127"},
    {"AboveInt8", "int8", "128", ", but takes a whole number from -128 to 127", ""},
    {"PlusSign", "uint8", "+7", "", "7"},
    {"NoNumber", "uint8", "x", ", but takes a whole number from 0 to 255", ""},
    {"NoText", "uint8", "", ", but takes a whole number from 0 to 255", ""},
    {"Fraction", "uint8", "1.0", ", but takes a whole number from 0 to 255", ""},
    {"BetweenTheRanges", "ranges", "8",
     ", but takes a whole number from -5 to -1 or 7 or from 10 to 20", ""},
    {"RangeOfOne", "ranges", "7", "", "7"},
    {"OwnWordsBelow", "own-words", "0", ", but takes a whole number from 1 to 4094: One to 4094.",
     ""},
    {"OwnWordsForNoNumber", "own-words", "x",
     ", but takes a whole number from 1 to 4094: One to 4094.", ""},
    {"UpperCaseBoolean", "boolean", "True", ", but takes true or false", ""},
    {"TextForEmpty", "empty", "x", ", but takes no value", ""},
    {"OtherWord", "two-words", "On", ", but takes on or off", ""},
    {"ThreeOctets", "ipv4", "192.0.2", ", but takes an IPv4 address such as 192.0.2.1", ""},
    {"LongIpv6", "ipv6", "2001:DB8:0:0::1", "", "2001:db8::1"},
    {"HostBitsInPrefix", "ipv6-prefix", "2001:db8::1/32", "", "2001:db8::/32"},
    {"LongPrefix", "ipv4-prefix", "192.0.2.0/33", ", but takes a prefix such as 192.0.2.0/24", ""},
    {"OwnWordsOfAPattern", "text", "A", ": Small letters only.", ""},
    {"DecimalWithZeros", "decimal", "01.50", "", "1.5"},
    {"BitsInOtherOrder", "bits", "down up", "", "up down"},
    {"FirstOfTheUnion", "union", "+7", "", "7"},
    // Only libyang can tell, with the whole configuration.
    {"NoIdentity", "identity", "square", "", "square"},
    {"NoInstance", "instance", "nowhere", "", "nowhere"},
    {"UnionWithAnIdentity", "identity-union", "square", "", "square"},
    {"ReferenceToAnIdentity", "identity-ref", "square", "", "square"},
    {"ReferenceToNothing", "number-ref", "9", "", "9"},
    {"ReferenceOutOfRange", "ref-ref", "256", ", but takes a whole number from 0 to 255", ""},
    // The parser works it out before the type sees it.
    {"Exponent", "uint8", "1e1", "", "1e1"},
    {"UpperCaseExponent", "uint8", "1E1", "", "1E1"},
};

class Value : public testing::TestWithParam<ValueCase> {};

TEST_P(Value, HasItsFault) {
  const ValueCase& row = GetParam();
  EXPECT_EQ(ValueFault(tests::SmallModel(), Leaf(row.leaf), row.text), row.fault);
  EXPECT_EQ(CanonicalValue(tests::SmallModel(), Leaf(row.leaf), row.text),
            row.fault.empty() ? row.canonical : row.text);
}

INSTANTIATE_TEST_SUITE_P(Texts, Value, testing::ValuesIn(kValues),
                         [](const auto& row) { return std::string(row.param.name); });

// A type whose values have no short words is told in those of libyang.
TEST(ValueOfNoWords, HasTheFaultOfLibyang) {
  const std::string fault = ValueFault(tests::SmallModel(), Leaf("short"), "four");
  EXPECT_EQ(fault.substr(0, 2), ": ");
  EXPECT_NE(fault.find("length"), std::string::npos) << fault;
}

// The text need not end where the string does that it is a part of.
TEST(ValueInALongerText, EndsWhereItEnds) {
  EXPECT_EQ(ValueFault(tests::SmallModel(), Leaf("uint8"), std::string_view("2555", 3)), "");
  EXPECT_EQ(CanonicalValue(tests::SmallModel(), Leaf("uint8"), std::string_view("+72", 2)), "7");
}

}  // namespace
}  // namespace ipvald
