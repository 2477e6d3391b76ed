// An entry whose name looks like a conversion of a path format changes no verdict about anything
// else: every refused case file, with such an entry added to each list that names can be keys of.
#include <gtest/gtest.h>
#include <libyang/libyang.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <ostream>
#include <set>
#include <string>
#include <tuple>
#include <utility>
#include <variant>
#include <vector>

#include <nlohmann/json.hpp>

#include "plugin_session.h"
#include "store/schema_node.h"
#include "store/snapshot.h"
#include "support/data_model.h"
#include "triggers.h"

namespace {

namespace fs = std::filesystem;
using nlohmann::json;

const char kNamePoint[] = "intf_l3_name_validation";

std::string TextOf(const fs::path& file) {
  std::ifstream stream(file);
  return {std::istreambuf_iterator<char>(stream), {}};
}

// A change that is refused.
struct Pair {
  fs::path file;
  json running;
  json candidate;
  std::string message;
};

std::vector<Pair> ReadRefusedPairs() {
  std::vector<Pair> pairs;
  for (const auto& entry : fs::recursive_directory_iterator(IPAV_SOURCE_DIR "/tests/cases")) {
    if (entry.path().extension() != ".txt" || entry.path().filename() == "CMakeLists.txt") continue;
    fs::path candidate = entry.path();
    candidate.replace_extension(".json");
    fs::path running = entry.path();
    running.replace_extension(".running.json");
    std::string message = TextOf(entry.path());
    if (!message.empty()) message.pop_back();  // line end
    pairs.push_back({candidate, fs::exists(running) ? json::parse(TextOf(running)) : json::object(),
                     json::parse(TextOf(candidate)), message});
  }
  return pairs;
}

const std::vector<Pair>& RefusedPairs() {
  static const std::vector<Pair> pairs = ReadRefusedPairs();
  return pairs;
}

struct StringKeyedList {
  const char* name;
  const char* path;     // in the data model
  const char* pointer;  // in a configuration
  const char* entry;    // what a case file could hold, and no check says anything about
  const char* key;
};

std::ostream& operator<<(std::ostream& out, const StringKeyedList& row) { return out << row.name; }

const StringKeyedList kLists[] = {
    {"L3", "/config/interface/l3", "/velmor-config:config/interface/velmor-ip-app:l3", "{}",
     "name"},
    {"Loopback", "/config/interface/loopback",
     "/velmor-config:config/interface/velmor-ip-app:loopback", "{}", "name"},
    {"Mgmt", "/config/interface/mgmt", "/velmor-config:config/interface/velmor-ip-app:mgmt", "{}",
     "name"},
    {"Ospf", "/internal/ospf-interface-l3", "/velmor-internal:internal/ospf-interface-l3",
     R"({"compound-id": 77, "area": "0.0.0.77", "if-address": "198.51.100.77"})", "if-name"},
    {"Ospfv3", "/internal/ospfv3-interface-l3", "/velmor-internal:internal/ospfv3-interface-l3",
     R"({"process": 77, "area": "0.0.0.77"})", "ospfv3-pm-if-name"},
};

json WithEntry(json configuration, const StringKeyedList& list, const std::string& name) {
  json entry = json::parse(list.entry);
  entry[list.key] = name;
  configuration[json::json_pointer(list.pointer)].push_back(entry);
  return configuration;
}

// Point, path and text of the refusal, "accepted", or how the plug-in failed.
std::string Verdict(const json& running, const json& candidate, bool with_name_point) {
  ipvald::PluginTask task;
  task.plugin = IPAV_PLUGIN;
  task.running = store::Snapshot::FromText(tests::DataModel(), running.dump());
  task.candidate = store::Snapshot::FromText(tests::DataModel(), candidate.dump());
  const auto calls = ipvald::FindTriggeredCalls(*task.running, *task.candidate);
  task.calls.assign(calls.begin(), calls.end());
  if (!with_name_point) {
    std::erase_if(task.calls, [](const auto& call) { return call.point->opaque == kNamePoint; });
  }
  std::string verdict = "accepted";
  ipvald::RunPluginSession(task, [&](const ipvald::Record& record) {
    if (const auto* end = std::get_if<ipvald::EndRecord>(&record); end != nullptr) {
      const confd::ValidationCall& call = task.calls[end->call];
      if (end->result != CONFD_OK) {
        verdict = call.point->opaque + " " + KeypathOf(*tests::DataModel(), call).text() + ": " +
                  end->text.value_or("");
      }
    } else if (const auto* failed = std::get_if<ipvald::FailedRecord>(&record); failed != nullptr) {
      verdict = "failed: " + failed->reason;
    }
  });
  return verdict;
}

// Of the pair as it is. Found once for all entries that are added to it.
const std::string& VerdictAlone(const Pair& pair, bool with_name_point) {
  static std::map<std::pair<fs::path, bool>, std::string> verdicts;
  std::string& verdict = verdicts[{pair.file, with_name_point}];
  if (verdict.empty()) verdict = Verdict(pair.running, pair.candidate, with_name_point);
  return verdict;
}

class PercentKey : public testing::TestWithParam<std::tuple<StringKeyedList, const char*>> {};

TEST_P(PercentKey, ChangesNoOtherVerdict) {
  const auto& [list, name] = GetParam();
  // The names of L3 interfaces are checked, and then the refusal is about the entry.
  const bool with_name_point = std::string(list.name) != "L3";
  ASSERT_GT(RefusedPairs().size(), 100u);
  for (const Pair& pair : RefusedPairs()) {
    const bool about_names = pair.file.parent_path().filename() == kNamePoint;
    if (about_names && !with_name_point) continue;
    const std::string& expected = VerdictAlone(pair, with_name_point);
    EXPECT_TRUE(expected.ends_with(": " + pair.message)) << pair.file << "\n" << expected;
    EXPECT_EQ(Verdict(WithEntry(pair.running, list, name), WithEntry(pair.candidate, list, name),
                      with_name_point),
              expected)
        << pair.file;
  }
}

INSTANTIATE_TEST_SUITE_P(Lists, PercentKey,
                         testing::Combine(testing::ValuesIn(kLists),
                                          testing::Values("%s", "%d", "%n", "%", "%%", "a%sb")),
                         [](const auto& row) {
                           return std::string(std::get<0>(row.param).name) + "_" +
                                  std::to_string(row.index);
                         });

bool CanBePercent(const lysc_node* key) {
  return lyd_value_validate(tests::DataModel()->context(), key, "%s", 2, nullptr, nullptr,
                            nullptr) == LY_SUCCESS;
}

// Paths of the configuration lists at and below `node` that an entry with the key "%s" fits into.
void CollectLists(const lysc_node* node, std::set<std::string>& paths) {
  for (; node != nullptr; node = node->next) {
    const bool is_configuration = (node->flags & LYS_CONFIG_W) != 0;
    if (is_configuration && lysc_is_key(node) && CanBePercent(node)) {
      paths.insert(store::SchemaPath(node->parent));
    }
    CollectLists(lysc_node_child(node), paths);
  }
}

TEST(PercentKeys, AllListsThatTakeOneAreTried) {
  std::set<std::string> tried;
  for (const StringKeyedList& list : kLists) tried.insert(list.path);
  std::set<std::string> all;
  uint32_t index = 0;
  while (const lys_module* module = ly_ctx_get_module_iter(tests::DataModel()->context(), &index)) {
    if (module->implemented != 0) CollectLists(module->compiled->data, all);
  }
  EXPECT_EQ(tried, all);
}

}  // namespace
