#include "report_json.h"

#include <nlohmann/json.hpp>

#include "store/schema_node.h"

namespace ipvald {
namespace {

using Json = nlohmann::ordered_json;

std::string Dump(const Json& json) {
  return json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

Json MessageOf(const CallReport& call) { return call.message ? Json(*call.message) : Json(); }

Json FaultsOf(const TransactionReport& report) {
  Json faults = Json::array();
  for (size_t i = 0; i < report.calls.size(); ++i) {
    for (const FaultReport& fault : report.calls[i].faults) {
      faults.push_back({{"call", i},
                        {"level", fault.level},
                        {"function", fault.function},
                        {"file", fault.file},
                        {"line", fault.line},
                        {"message", fault.message}});
    }
  }
  return faults;
}

// Everything but what only a call that came back has is null for the call in which the plug-in
// failed.
Json CallOf(const CallReport& call) {
  const bool ended = call.answer != Answer::kNone;
  return {{"point", call.point},
          {"id", call.id},
          {"path", call.path},
          {"reason", call.reason},
          {"result", ended ? Json(call.result) : Json()},
          {"message", MessageOf(call)},
          {"microseconds", ended ? Json(call.microseconds) : Json()},
          {"datastore_calls", ended ? Json(call.datastore_calls) : Json()},
          {"log", call.log}};
}

Json WarningsOf(const TransactionReport& report) {
  Json warnings = Json::array();
  for (const CallReport& call : report.calls) {
    if (call.answer != Answer::kWarning) continue;
    warnings.push_back({{"point", call.point}, {"path", call.path}, {"message", MessageOf(call)}});
  }
  return warnings;
}

}  // namespace

std::string JsonReport(const TransactionReport& report) {
  const bool failed = report.verdict == Verdict::kPluginFailure;
  const CallReport* decisive = report.decisive ? &report.calls[*report.decisive] : nullptr;
  Json json;
  json["verdict"] = NameOf(report.verdict);
  json["point"] = decisive != nullptr ? Json(decisive->point) : Json();
  json["id"] = decisive != nullptr ? Json(decisive->id) : Json();
  json["path"] = decisive != nullptr ? Json(decisive->path) : Json();
  json["message"] = decisive != nullptr ? MessageOf(*decisive) : Json();
  json["diagnostic"] = failed ? Json(report.diagnostic) : Json();
  json["stage"] = failed && decisive == nullptr ? Json(report.stage) : Json();
  json["output"] = report.output;
  json["warnings"] = WarningsOf(report);
  json["calls"] = Json::array();
  for (const CallReport& call : report.calls) json["calls"].push_back(CallOf(call));
  json["faults"] = FaultsOf(report);
  json["open_cursors"] = report.open_cursors;
  return Dump(json);
}

std::string JsonPoints(const std::vector<store::ValidationPoint>& points) {
  Json rows = Json::array();
  for (const store::ValidationPoint& point : points) {
    Json dependencies = Json::array();
    for (const store::Dependency& dependency : point.dependencies) {
      dependencies.push_back(
          {{"path", store::SchemaPath(dependency.node)}, {"absolute", dependency.absolute}});
    }
    rows.push_back({{"point", point.opaque},
                    {"id", point.id},
                    {"node", store::SchemaPath(point.node)},
                    {"call_once", point.call_once},
                    {"priority", point.priority},
                    {"dependencies", dependencies}});
  }
  return Dump(rows);
}

}  // namespace ipvald
