#include "store/tags.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <map>
#include <ostream>
#include <sstream>
#include <string>
#include <unordered_map>

#include "store/error.h"
#include "store/schema.h"
#include "support/store_fixture.h"
#include "velmor-internal.h"
#include "velmor-ip-app.h"

namespace {

using tests::RowName;

struct FixedCase {
  const char* name;
  const char* node;
  uint32_t tag;
};

std::ostream& operator<<(std::ostream& out, const FixedCase& c) { return out << c.node; }

const FixedCase kFixedCases[] = {
    {"Mgmt", "mgmt", 0x1412343f},
    {"L3", "l3", 0x213f1a7a},
    {"Loopback", "loopback", 0x1472cced},
    {"OspfInterface", "ospf-interface-l3", 0x6af0fc0e},
    {"Ospfv3Interface", "ospfv3-interface-l3", 0x32ca0b6a},
    {"Vrf", "vrf", 0x4c5f3e78},
    {"Ospfv3InterfaceName", "ospfv3-pm-if-name", 0x349b54d4},
};

class FixedTag : public testing::TestWithParam<FixedCase> {};

TEST_P(FixedTag, IsThatOfTheDevice) { EXPECT_EQ(store::TagOf(GetParam().node), GetParam().tag); }

INSTANTIATE_TEST_SUITE_P(Nodes, FixedTag, testing::ValuesIn(kFixedCases), RowName<FixedCase>);

TEST(Tag, IsAPositiveNumberOf31Bits) {
  for (int i = 0; i < 100000; ++i) {
    const uint32_t tag = store::TagOf("name" + std::to_string(i));
    ASSERT_NE(tag, 0u);
    ASSERT_EQ(tag & 0x80000000u, 0u);
  }
}

TEST(TagTable, KnowsTextsByTheirNumber) {
  store::TagTable table;
  const uint32_t tag = table.Add("node");
  EXPECT_EQ(tag, store::TagOf("node"));
  EXPECT_STREQ(table.Text(tag), "node");
  EXPECT_EQ(table.Text(tag + 1), nullptr);
  EXPECT_EQ(table.Add("node"), tag) << "the same text again";
}

TEST(TagTable, RefusesTwoTextsWithOneNumber) {
  std::unordered_map<uint32_t, std::string> texts;
  std::string first;
  std::string second;
  for (int i = 0; i < 1000000 && second.empty(); ++i) {
    const std::string text = "n" + std::to_string(i);
    const auto [entry, inserted] = texts.emplace(store::TagOf(text), text);
    if (inserted) continue;
    first = entry->second;
    second = text;
  }
  ASSERT_FALSE(second.empty()) << "no collision among a million names";
  store::TagTable table;
  const uint32_t tag = table.Add(first);
  try {
    table.Add(second);
    FAIL() << "accepted";
  } catch (const store::Error& error) {
    EXPECT_EQ(std::string(error.what()),
              "\"" + second + "\" and \"" + first + "\" have the same tag number");
  }
  EXPECT_STREQ(table.Text(tag), first.c_str());
}

TEST(GeneratedHeader, HasTheNumbersOfTheSchema) {
  EXPECT_EQ(ipapp_l3, 0x213f1a7a);
  EXPECT_EQ(ipapp_vrf, 0x4c5f3e78);
  EXPECT_EQ(velmor_internal_ospf_interface_l3, 0x6af0fc0e);
  EXPECT_EQ(velmor_internal_ospfv3_pm_if_name, 0x349b54d4);
  EXPECT_EQ(ipapp_lower_layer_if, static_cast<int>(store::TagOf("lower-layer-if")));
  EXPECT_EQ(ipapp__ns, static_cast<int>(store::TagOf("urn:velmor:yang:ip-app")));
  EXPECT_STREQ(ipapp__ns_uri, "urn:velmor:yang:ip-app");
  EXPECT_STREQ(ipapp__ns_id, "urn:velmor:yang:ip-app");
}

std::string SymbolOf(std::string name) {
  std::replace(name.begin(), name.end(), '-', '_');
  return name;
}

void CollectTags(const store::Schema& schema, const lysc_node* parent, const std::string& module,
                 std::map<std::string, uint32_t>& tags) {
  for (const lysc_node* node : schema.Children(parent)) {
    if (module == node->module->name) tags[SymbolOf(node->name)] = schema.tag(node).tag;
    CollectTags(schema, node, module, tags);
  }
}

// Lines are "#define PREFIX_name number"; PREFIX__ begins what is about the namespace.
TEST(GeneratedHeader, HasEveryNodeAndNoOther) {
  const auto schema = store::Schema::Load(IPAV_SOURCE_DIR "/yang");
  std::map<std::string, uint32_t> tags;
  CollectTags(*schema, nullptr, "velmor-internal", tags);
  ASSERT_TRUE(tags.contains("ospf_interface_l3"));

  std::ifstream header(IPAV_BINARY_DIR "/generated/velmor-internal.h");
  ASSERT_TRUE(header.is_open());
  const std::string start = "#define velmor_internal_";
  std::map<std::string, uint32_t> defined;
  for (std::string line; std::getline(header, line);) {
    if (!line.starts_with(start) || line.starts_with(start + "_")) continue;
    std::istringstream rest(line.substr(start.size()));
    std::string symbol;
    uint32_t number = 0;
    rest >> symbol >> number;
    defined[symbol] = number;
  }
  EXPECT_EQ(defined, tags);
}

}  // namespace
