#include "store/snapshot.h"

#include <gtest/gtest.h>
#include <libyang/libyang.h>

#include <ostream>
#include <string>

#include "confd/keypath.h"
#include "store/error.h"
#include "support/store_fixture.h"

namespace {

using store::Snapshot;
using tests::RowName;
using tests::SampleSchema;
using tests::StoreTest;

std::string Paths(const std::vector<const lyd_node*>& nodes) {
  std::string text;
  for (const lyd_node* node : nodes) {
    text += (text.empty() ? "" : " ") + confd::Keypath(*SampleSchema(), node).text();
  }
  return text;
}

TEST_F(StoreTest, EmptyConfigurationHasContainersAndDefaults) {
  Open("{}");
  const auto empty = Snapshot::Empty(SampleSchema());
  lyd_node* answer = nullptr;
  EXPECT_EQ(lyd_find_path(empty->tree(), "/store-sample:values/answer", 0, &answer), LY_SUCCESS);
  EXPECT_EQ(Get("/values/answer"), "42");
}

TEST_F(StoreTest, XmlIsReadToo) {
  Open("<gauge xmlns=\"urn:velmor:yang:store-sample\"><id>7</id><reading>-7</reading></gauge>");
  EXPECT_EQ(Get("/gauge{7}/reading"), "-7");
}

// The restrictions that a leaf adds to a type of tailf-common hold for the canonical text.
TEST_F(StoreTest, LeafMayRestrictItsType) {
  const struct {
    const char* leaf;
    const char* allowed;
    const char* canonical;
    const char* refused;
  } kRows[] = {{"plen-in-ten", "10.0.0.1/8", "10.0.0.1/8", "192.0.2.1/24"},
               {"plen-in-documentation", "2001:0DB8::1/64", "2001:db8::1/64", "fd00::1/64"},
               {"two-octets", "0A:FF", "0aff", "0a:ff:00"}};
  for (const auto& row : kRows) {
    const auto text = [&row](const char* value) {
      return std::string(R"({"store-sample:values":{")") + row.leaf + R"(":")" + value + R"("}})";
    };
    Open(text(row.allowed));
    EXPECT_EQ(Get((std::string("/values/") + row.leaf).c_str()), row.canonical);
    EXPECT_THROW(Snapshot::FromText(SampleSchema(), text(row.refused)), store::Error) << row.leaf;
  }
}

struct TextCase {
  const char* name;
  const char* text;
  const char* message;  // a piece of it
  uint64_t line;
};

std::ostream& operator<<(std::ostream& out, const TextCase& c) { return out << c.text; }

class BadText : public testing::TestWithParam<TextCase> {};

TEST_P(BadText, IsAnError) {
  try {
    Snapshot::FromText(SampleSchema(), GetParam().text);
    FAIL() << "accepted";
  } catch (const store::Error& error) {
    EXPECT_NE(std::string(error.what()).find(GetParam().message), std::string::npos)
        << error.what();
    EXPECT_EQ(std::string(error.what()).find('\n'), std::string::npos) << "one line";
    EXPECT_EQ(error.line(), GetParam().line);
  }
}

const TextCase kTextCases[] = {
    {"NotJson", "{\n\"store-sample:values\": }", "", 2},
    {"UnknownNode", "{\n\n\"store-sample:nowhere\": 1}", "nowhere", 3},
    {"BadValue", "{\"store-sample:values\": {\n\"int8\": 128}}", "int8", 2},
    {"DuplicateEntry", R"({"store-sample:gauge": [{"id": 1}, {"id": 1}]})", "gauge", 0},
    {"MissingKey", R"({"store-sample:gauge": [{"reading": 1}]})", "id", 1},
    {"AddressWithoutLength", R"({"store-sample:values": {"ipv4-plen": "10.0.0.1"}})",
     "Not an IPv4 address with prefix length, such as 192.0.2.1/24. "
     "10.0.0.1 lacks its length, such as 10.0.0.1/24.",
     1},
    {"Ipv6AddressWithoutLength", R"({"store-sample:values": {"ipv6-plen": "::1"}})",
     "Not an IPv6 address with prefix length, such as 2001:db8::1/64. "
     "::1 lacks its length, such as ::1/64.",
     1},
    {"LengthTooLong", R"({"store-sample:values": {"ipv6-plen": "::1/129"}})",
     "Not an IPv6 address with prefix length, such as 2001:db8::1/64.", 1},
    {"LengthOf33", R"({"store-sample:values": {"ipv4-plen": "10.0.0.1/33"}})", "ipv4-plen", 1},
    {"LengthWithLeadingZero", R"({"store-sample:values": {"ipv4-plen": "10.0.0.1/024"}})",
     "10.0.0.1/024 is written 10.0.0.1/24 here.", 1},
    {"LengthOfTwoZeros", R"({"store-sample:values": {"ipv4-plen": "10.0.0.1/00"}})",
     "10.0.0.1/00 is written 10.0.0.1/0 here.", 1},
    {"Ipv6LengthWithLeadingZero", R"({"store-sample:values": {"ipv6-plen": "::1/0128"}})",
     "::1/0128 is written ::1/128 here.", 1},
    {"LengthWithSign", R"({"store-sample:values": {"ipv4-plen": "10.0.0.1/+24"}})", "ipv4-plen", 1},
    {"MaskForLength", R"({"store-sample:values": {"ipv4-plen": "10.0.0.1/255.240.0.0"}})",
     "10.0.0.1/255.240.0.0 is written 10.0.0.1/12 here.", 1},
    {"MaskWithHole", R"({"store-sample:values": {"ipv4-plen": "10.0.0.1/255.0.255.0"}})",
     "such as 192.0.2.1/24. Data location", 1},
    {"HexListWithoutColons", R"({"store-sample:values": {"octets": "0a00"}})",
     "Not octets as two hex digits each, joined by ':', such as 0a:00:00:00. "
     "0a00 is written 0a:00 here.",
     1},
    {"HexListOfOneDigit", R"({"store-sample:values": {"octets": "a:1"}})",
     "a:1 is written 0a:01 here.", 1},
    {"NoHexList", R"({"store-sample:values": {"octets": "0g"}})",
     "such as 0a:00:00:00. Data location", 1},
    {"DottedQuadForHexList", R"({"store-sample:values": {"octets": "10.0.255.0"}})",
     "10.0.255.0 is written 0a:00:ff:00 here.", 1},
    {"Ipv6AddressForHexList", R"({"store-sample:values": {"octets": "2001:db8::1"}})",
     "2001:db8::1 is written 20:01:0d:b8:00:00:00:00:00:00:00:00:00:00:00:01 here.", 1},
    {"NotXml", "<gauge", "", 1},
};
INSTANTIATE_TEST_SUITE_P(Texts, BadText, testing::ValuesIn(kTextCases), RowName<TextCase>);

class SnapshotWalk : public StoreTest {
 protected:
  SnapshotWalk() {
    Open(R"({"store-sample:room":{"shelf":[{"name":"b"},{"name":"gone"}]}})",
         R"({"store-sample:room":{"shelf":[
              {"name":"b","note":[{"id":"z"},{"id":"a"}]}, {"name":"a","note":[{"id":"m"}]}]},
            "store-sample:gauge":[{"id":10},{"id":9}]})");
  }

  const lysc_node* Node(const char* path) const {
    return lys_find_path(SampleSchema()->context(), nullptr, path, 0);
  }
};

TEST_F(SnapshotWalk, InstancesComeInWalkOrder) {
  EXPECT_EQ(Paths(candidate_->Instances(Node("/store-sample:gauge"), nullptr)),
            "/gauge{9} /gauge{10}");
  EXPECT_EQ(Paths(candidate_->Instances(Node("/store-sample:room/shelf/note"), nullptr)),
            "/room/shelf{a}/note{m} /room/shelf{b}/note{z} /room/shelf{b}/note{a}");
  EXPECT_EQ(Paths(candidate_->Instances(Node("/store-sample:room/shelf/place"), nullptr)),
            "/room/shelf{a}/place /room/shelf{b}/place");
  EXPECT_EQ(Paths(candidate_->Instances(Node("/store-sample:room"), nullptr)), "/room");
}

TEST_F(SnapshotWalk, InstancesAreThoseBelowTheAncestor) {
  const lyd_node* shelf = Find("/store-sample:room/shelf[name='b']");
  EXPECT_EQ(Paths(candidate_->Instances(Node("/store-sample:room/shelf/note"), shelf)),
            "/room/shelf{b}/note{z} /room/shelf{b}/note{a}");
  EXPECT_EQ(Paths(candidate_->Instances(Node("/store-sample:room/shelf"), shelf)), "/room/shelf{b}")
      << "the ancestor itself";
}

TEST_F(SnapshotWalk, InstancesOfAnAbsentNodeAreNone) {
  EXPECT_EQ(Paths(candidate_->Instances(Node("/store-sample:box"), nullptr)), "");
  EXPECT_EQ(Paths(candidate_->Instances(Node("/store-sample:box/thing/weight"), nullptr)), "");
}

TEST_F(SnapshotWalk, CounterpartHasTheSamePathAndKeys) {
  const lyd_node* shelf = Find("/store-sample:room/shelf[name='b']");
  const lyd_node* in_running = running_->Counterpart(shelf);
  ASSERT_NE(in_running, nullptr);
  EXPECT_NE(in_running, shelf);
  EXPECT_EQ(Paths({in_running}), "/room/shelf{b}");
  EXPECT_EQ(candidate_->Counterpart(in_running), shelf);
}

TEST_F(SnapshotWalk, CounterpartOfWhatIsNotThereIsNull) {
  EXPECT_EQ(running_->Counterpart(Find("/store-sample:room/shelf[name='a']")), nullptr);
  EXPECT_EQ(running_->Counterpart(Find("/store-sample:room/shelf[name='a']/note[id='m']/id")),
            nullptr);
  EXPECT_EQ(running_->Counterpart(Find("/store-sample:gauge[id='9']")), nullptr);
}

// Children beyond the eighth are looked up by another way.
TEST_F(StoreTest, LeavesAreFoundHoweverManyStandBeforeThem) {
  std::string words;
  for (int i = 0; i < 20; ++i) words += (i > 0 ? "," : "") + ("\"w" + std::to_string(i) + "\"");
  Open(
      R"({"store-sample:values":{"text":"t","word":[)" + words +
      R"(],"uint8":1,"uint16":2,"uint32":3,"int8":4,"int16":5,"int32":6,"boolean":true,"level":"low",
           "marker":[null]}})");
  EXPECT_EQ(Get("/values/text"), "t");
  EXPECT_EQ(Get("/values/int32"), "6");
  EXPECT_EQ(Get("/values/answer"), "42");
  EXPECT_EQ(Get("/values/ratio"), "error 1");
}

}  // namespace
