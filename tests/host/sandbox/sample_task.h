// A transaction for plug-ins to be called in.
#ifndef TESTS_HOST_SANDBOX_SAMPLE_TASK_H_
#define TESTS_HOST_SANDBOX_SAMPLE_TASK_H_

#include <string>

#include "plugin_session.h"
#include "store/snapshot.h"
#include "support/data_model.h"

namespace ipvald {

/// Creates the L3 interfaces 7 and 8 on an empty device; calls a point of the data model for each
/// of them.
inline PluginTask TaskFor(const std::string& plugin) {
  const auto& schema = tests::DataModel();
  static const auto running = store::Snapshot::Empty(schema);
  static const auto candidate = store::Snapshot::FromText(
      schema,
      R"({"velmor-config:config":{"interface":{"velmor-ip-app:l3":[{"name":"7"},{"name":"8"}]}}})");
  PluginTask task{plugin, running, candidate, {}};
  for (const store::ValidationPoint& point : schema->validation_points()) {
    if (point.opaque != "intf_l3_name_validation") continue;
    for (const lyd_node* l3 : candidate->Instances(point.node, nullptr)) {
      task.calls.push_back({&point, l3, nullptr});
    }
    break;
  }
  return task;
}

}  // namespace ipvald

#endif  // TESTS_HOST_SANDBOX_SAMPLE_TASK_H_
