// Configurations of a data model with a leaf of every type and every kind of node: what is read in
// both formats, and what is not.
#include <gtest/gtest.h>
#include <libyang/libyang.h>

#include <cstdlib>
#include <ostream>
#include <string>

#include "configuration_file.h"
#include "support/store_fixture.h"

namespace {

using tests::RowName;
using tests::SampleSchema;

std::shared_ptr<const store::Snapshot> Parse(const std::string& text) {
  return ipvald::ParseConfiguration(SampleSchema(), "input", text).snapshot;
}

std::string ErrorOf(const std::string& text) {
  try {
    Parse(text);
  } catch (const ipvald::InputError& error) {
    return error.what();
  }
  return "accepted";
}

std::string Printed(const store::Snapshot& configuration, LYD_FORMAT format) {
  char* printed = nullptr;
  lyd_print_mem(&printed, configuration.tree(), format, LYD_PRINT_WITHSIBLINGS);
  const std::string text = printed == nullptr ? "" : printed;
  free(printed);
  return text;
}

std::string InValues(const std::string& members) {
  return "{\"store-sample:values\": {\n" + members + "}}";
}

std::string InXml(const std::string& elements) {
  return "<values xmlns=\"urn:velmor:yang:store-sample\">\n" + elements + "</values>";
}

struct ValueCase {
  const char* name;
  const char* member;
};

std::ostream& operator<<(std::ostream& out, const ValueCase& row) { return out << row.name; }

const ValueCase kValues[] = {
    {"Int8", "\"int8\": -128"},
    {"Int64", "\"int64\": \"-9223372036854775808\""},
    {"Uint64", "\"uint64\": \"18446744073709551615\""},
    {"Exponent", "\"uint16\": 1e2"},
    {"Boolean", "\"boolean\": false"},
    {"Enumeration", "\"level\": \"low\""},
    {"Binary", "\"bytes\": \"Cv8A\""},
    {"Decimal", "\"ratio\": \"1.50\""},
    {"Identity", "\"color\": \"store-sample:red\""},
    {"Empty", "\"marker\": [null]"},
    {"Ipv6", "\"ipv6\": \"2001:db8::1\""},
    {"UnionOfNumber", "\"number-or-word\": 7"},
    {"UnionOfText", "\"number-or-word\": \"seven\""},
    {"UnionOfEmpty", "\"nothing-or-number\": [null]"},
    {"UnionOfAddresses", "\"any-plen\": \"2001:db8::1/64\""},
    {"Bits", "\"options\": \"\""},
    {"LeafList", "\"word\": [\"a\", \"b\"]"},
    {"EmptyLeafList", "\"word\": []"},
};

class Value : public testing::TestWithParam<ValueCase> {};

TEST_P(Value, IsReadInBothFormats) {
  const std::string json = InValues(GetParam().member);
  ASSERT_EQ(ErrorOf(json), "accepted");
  const auto configuration = Parse(json);
  const std::string xml = Printed(*configuration, LYD_XML);
  ASSERT_EQ(ErrorOf("<data>" + xml + "</data>"), "accepted") << xml;
  const auto again = Parse("<data>" + xml + "</data>");
  EXPECT_EQ(Printed(*again, LYD_JSON), Printed(*configuration, LYD_JSON));
}

INSTANTIATE_TEST_SUITE_P(Types, Value, testing::ValuesIn(kValues), RowName<ValueCase>);

struct FaultCase {
  const char* name;
  std::string text;
  std::string error;
};

std::ostream& operator<<(std::ostream& out, const FaultCase& row) { return out << row.name; }

const FaultCase kFaults[] = {
    {"LeafListValueTwice", InValues("\"word\": [\"a\",\n\"b\",\n\"a\"]"),
     "input:4: a second \"word\" with the value \"a\"; the first is on line 2"},
    {"XmlLeafListValueTwice", InXml("<word>a</word>\n<word>a</word>"),
     "input:3: a second <word> with the value \"a\"; the first is on line 2"},
    {"OneValueForLeafList", InValues("\"word\": \"a\""),
     "input:2: \"word\" takes an array of values, [...]"},
    {"ObjectInLeafList", InValues("\"word\": [{}]"),
     "input:2: \"word\" takes an array of values, [...]"},
    {"ValueForEmpty", InValues("\"marker\": \"\""),
     "input:2: \"marker\" has no value: it is there as [null]"},
    {"TrueForEmpty", InValues("\"marker\": [true]"), "input:2: \"marker\" takes one value"},
    {"NumberForInt64", InValues("\"int64\": 1"),
     "input:2: \"int64\" is 1, but takes a whole number from -9223372036854775808 to "
     "9223372036854775807, in quotes"},
    {"BooleanInQuotes", InValues("\"boolean\": \"true\""),
     "input:2: \"boolean\" is \"true\", but takes true or false, without quotes"},
    {"NumberForBoolean", InValues("\"boolean\": 1"),
     "input:2: \"boolean\" is 1, but takes true or false"},
    {"XmlNoBoolean", InXml("<boolean>yes</boolean>"),
     "input:2: <boolean> is \"yes\", but takes true or false"},
    {"BelowInt8", InValues("\"int8\": -129"),
     "input:2: \"int8\" is -129, but takes a whole number from -128 to 127"},
    {"AboveUint64", InXml("<uint64>18446744073709551616</uint64>"),
     "input:2: <uint64> is \"18446744073709551616\", but takes a whole number from 0 to "
     "18446744073709551615"},
    {"NoAddress", InValues("\"ipv4\": \"192.0.2\""),
     "input:2: \"ipv4\" is \"192.0.2\", but takes an IPv4 address such as 192.0.2.1"},
    {"NoPrefix", InValues("\"ipv6-prefix\": \"lan\""),
     "input:2: \"ipv6-prefix\" is \"lan\", but takes a prefix such as 2001:db8::/32"},
};

class Fault : public testing::TestWithParam<FaultCase> {};

TEST_P(Fault, IsTold) { EXPECT_EQ(ErrorOf(GetParam().text), GetParam().error); }

INSTANTIATE_TEST_SUITE_P(Types, Fault, testing::ValuesIn(kFaults), RowName<FaultCase>);

}  // namespace
