// Which calls a change leads to, on a small data model with points in every position
// (data/trigger-model.yang).
#include "triggers.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <ostream>
#include <string>
#include <vector>

#include "store/schema.h"
#include "store/snapshot.h"

namespace ipvald {
namespace {

namespace fs = std::filesystem;

// A folder with the test's model beside the project's extensions.
class ModelFolder {
 public:
  ModelFolder() {
    std::string pattern = testing::TempDir() + "trigger-model-XXXXXX";
    path_ = mkdtemp(pattern.data());
    const fs::path extensions = "tailf-common@2024-01-01.yang";
    fs::copy_file(fs::path(IPAV_SOURCE_DIR "/yang") / extensions, path_ / extensions);
    fs::copy_file(IPAV_SOURCE_DIR "/tests/host/transaction/data/trigger-model.yang",
                  path_ / "trigger-model.yang");
  }
  ~ModelFolder() { fs::remove_all(path_); }

  const fs::path& path() const { return path_; }

 private:
  fs::path path_;
};

std::shared_ptr<const store::Schema> TriggerModel() {
  static const std::shared_ptr<const store::Schema> schema =
      store::Schema::Load(ModelFolder().path());
  return schema;
}

using Calls = std::vector<std::string>;

// The calls as "opaque keypath: reason".
Calls CallsFor(const std::string& running, const std::string& candidate) {
  const auto from = store::Snapshot::FromText(TriggerModel(), running);
  const auto to = store::Snapshot::FromText(TriggerModel(), candidate);
  Calls texts;
  for (const TriggeredCall& call : FindTriggeredCalls(*from, *to)) {
    texts.push_back(call.point->opaque + " " + KeypathOf(*TriggerModel(), call).text() + ": " +
                    ReasonOf(*TriggerModel(), call));
  }
  return texts;
}

std::string Ports(const std::string& entries) {
  return R"({"trigger-model:top":{"port":[)" + entries + "]}}";
}

std::string Routes(const std::string& entries, const std::string& global) {
  return R"({"trigger-model:route":[)" + entries + R"(],"trigger-model:settings":{"global":")" +
         global + "\"}}";
}

const char kAlways[] = "always /always: called at every validation";

struct TriggerCase {
  const char* name;
  std::string running;
  std::string candidate;
  Calls calls;
};

std::ostream& operator<<(std::ostream& out, const TriggerCase& row) { return out << row.name; }

const TriggerCase kCases[] = {
    {"NoChange", Ports(R"({"name":"a","speed":1})"), Ports(R"({"name":"a","speed":1})"), {}},
    {"BothEmpty", "{}", "{}", {}},
    {"DependencyChanged",
     Ports(R"({"name":"a","timer":{"minimum":1}},{"name":"b"})"),
     Ports(R"({"name":"a","timer":{"minimum":2}},{"name":"b"})"),
     {"timer /top/port{a}/timer: changed /top/port{a}/timer/minimum",
      "ports /top/port: changed /top/port{a}/timer/minimum",
      "port /top/port{a}: changed /top/port{a}/timer/minimum", kAlways}},
    {"OtherLeafOfTheContainerChanged",
     Ports(R"({"name":"a","timer":{"other":1}})"),
     Ports(R"({"name":"a","timer":{"other":2}})"),
     {"ports /top/port: changed /top/port{a}/timer/other",
      "port /top/port{a}: changed /top/port{a}/timer/other", kAlways}},
    {"DependencyDeletedStillCallsTheContainer",
     Ports(R"({"name":"a","timer":{"minimum":1}})"),
     Ports(R"({"name":"a"})"),
     {"timer /top/port{a}/timer: deleted /top/port{a}/timer/minimum",
      "ports /top/port: deleted /top/port{a}/timer/minimum",
      "port /top/port{a}: deleted /top/port{a}/timer/minimum", kAlways}},
    {"LeafDependsOnItself",
     Ports(R"({"name":"a","speed":1})"),
     Ports(R"({"name":"a","speed":2})"),
     {"ports /top/port: changed /top/port{a}/speed",
      "port /top/port{a}: changed /top/port{a}/speed",
      "speed /top/port{a}/speed: changed /top/port{a}/speed", kAlways}},
    {"LeafDeletedIsNotCalled",
     Ports(R"({"name":"a","speed":1})"),
     Ports(R"({"name":"a"})"),
     {"ports /top/port: deleted /top/port{a}/speed",
      "port /top/port{a}: deleted /top/port{a}/speed", kAlways}},
    {"SiblingDependencyCallsTheLeafOfTheSameEntry",
     Ports(R"({"name":"a","speed":1},{"name":"b","speed":1})"),
     Ports(R"({"name":"a","speed":1},{"name":"b","speed":1,"mode":"fast"})"),
     {"ports /top/port: changed /top/port{b}/mode", "port /top/port{b}: changed /top/port{b}/mode",
      "speed /top/port{b}/speed: changed /top/port{b}/mode", kAlways}},
    {"SiblingDependencyWithoutTheLeaf",
     Ports(R"({"name":"a"})"),
     Ports(R"({"name":"a","mode":"fast"})"),
     {"ports /top/port: changed /top/port{a}/mode", "port /top/port{a}: changed /top/port{a}/mode",
      kAlways}},
    {"EntryCreatedCallsWhatIsBeneath",
     Ports(R"({"name":"a","speed":1})"),
     Ports(R"({"name":"a","speed":1},{"name":"b","speed":1})"),
     {"timer /top/port{b}/timer: created /top/port{b}", "ports /top/port: created /top/port{b}",
      "port /top/port{b}: created /top/port{b}", "speed /top/port{b}/speed: created /top/port{b}",
      "units /top/port{b}/unit: created /top/port{b}", kAlways}},
    {"EntryDeletedCallsOnlyTheList",
     Ports(R"({"name":"a"},{"name":"b","speed":1,"unit":[{"id":1}]})"),
     Ports(R"({"name":"a"})"),
     {"ports /top/port: deleted /top/port{b}", kAlways}},
    {"LastEntryDeletedStillCallsTheList",
     Ports(R"({"name":"a"})"),
     "{}",
     {"ports /top/port: deleted /top/port{a}", kAlways}},
    {"FirstReasonIsKept",
     Ports(R"({"name":"a","speed":1,"mode":"x"})"),
     Ports(R"({"name":"a","speed":2,"mode":"y"})"),
     {"ports /top/port: changed /top/port{a}/speed",
      "port /top/port{a}: changed /top/port{a}/speed",
      "speed /top/port{a}/speed: changed /top/port{a}/speed", kAlways}},
    {"NestedCallOnceForEachParent",
     Ports(R"({"name":"a","unit":[{"id":1}]},{"name":"b"},{"name":"c"})"),
     Ports(R"({"name":"a"},{"name":"b","unit":[{"id":1},{"id":2}]},{"name":"c"})"),
     {"ports /top/port: deleted /top/port{a}/unit{1}",
      "port /top/port{a}: deleted /top/port{a}/unit{1}",
      "port /top/port{b}: created /top/port{b}/unit{1}",
      "units /top/port{a}/unit: deleted /top/port{a}/unit{1}",
      "units /top/port{b}/unit: created /top/port{b}/unit{1}", kAlways}},
    {"EntryMoved",
     Ports(R"({"name":"a","unit":[{"id":1},{"id":2}]})"),
     Ports(R"({"name":"a","unit":[{"id":2},{"id":1}]})"),
     {"ports /top/port: moved /top/port{a}/unit{1}",
      "port /top/port{a}: moved /top/port{a}/unit{1}",
      "units /top/port{a}/unit: moved /top/port{a}/unit{1}", kAlways}},
    {"PresenceContainerCreated",
     Ports(R"({"name":"a"})"),
     Ports(R"({"name":"a","option":{}})"),
     {"ports /top/port: created /top/port{a}/option",
      "port /top/port{a}: created /top/port{a}/option",
      "option /top/port{a}/option: created /top/port{a}/option", kAlways}},
    {"PresenceContainerDeletedIsNotCalled",
     Ports(R"({"name":"a","option":{"level":1}})"),
     Ports(R"({"name":"a"})"),
     {"ports /top/port: deleted /top/port{a}/option",
      "port /top/port{a}: deleted /top/port{a}/option", kAlways}},
    {"TopLevelCallOnce",
     Routes("", "x"),
     Routes(R"({"id":1},{"id":2})", "x"),
     {"routes /route: created /route{1}", kAlways}},
    {"AbsoluteDependencyCallsEveryInstance",
     Routes(R"({"id":2},{"id":1})", "x"),
     Routes(R"({"id":2},{"id":1})", "y"),
     {"route-late /route{1}: changed /settings/global",
      "route-late /route{2}: changed /settings/global", kAlways}},
    {"AbsoluteDependencyWithoutInstances", Routes("", "x"), Routes("", "y"), {kAlways}},
    {"PriorityBeforeSchemaOrder",
     Routes(R"({"id":1})", "x"),
     R"({"trigger-model:route":[{"id":1},{"id":2}],"trigger-model:settings":{"global":"y"},)"
     R"("trigger-model:top":{"port":[{"name":"b","timer":{"minimum":1}},{"name":"a"}]}})",
     {"timer /top/port{a}/timer: created /top/port{a}",
      "timer /top/port{b}/timer: created /top/port{b}", "ports /top/port: created /top/port{a}",
      "port /top/port{a}: created /top/port{a}", "port /top/port{b}: created /top/port{b}",
      "units /top/port{a}/unit: created /top/port{a}",
      "units /top/port{b}/unit: created /top/port{b}", "routes /route: created /route{2}",
      "route-late /route{1}: changed /settings/global",
      "route-late /route{2}: changed /settings/global", kAlways}},
};

class Triggers : public testing::TestWithParam<TriggerCase> {};

TEST_P(Triggers, CallsInOrder) {
  EXPECT_EQ(CallsFor(GetParam().running, GetParam().candidate), GetParam().calls);
}

INSTANTIATE_TEST_SUITE_P(Changes, Triggers, testing::ValuesIn(kCases),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(TriggersOfManyChanges, EachInstanceOnce) {
  std::string running;
  std::string candidate;
  constexpr int kPorts = 10000;
  for (int i = 0; i < kPorts; ++i) {
    const std::string separator = i == 0 ? "" : ",";
    const std::string name = R"({"name":")" + std::to_string(i) + "\"";
    running += separator + name + R"(,"speed":1,"timer":{"minimum":1}})";
    candidate += separator + name + R"(,"speed":2,"timer":{"minimum":2}})";
  }
  // One call for the list and the container at the top, one for each entry, its leaf and its
  // container.
  EXPECT_EQ(CallsFor(Ports(running), Ports(candidate)).size(), size_t{2 + 3 * kPorts});
}

}  // namespace
}  // namespace ipvald
