#include "transaction.h"

#include <utility>

#include "plugin_process.h"
#include "triggers.h"

namespace ipvald {
namespace {

CallReport Describe(const confd::Schema& schema, const TriggeredCall& call) {
  CallReport report;
  report.point = call.point->opaque;
  report.id = call.point->id;
  report.path = KeypathOf(schema, call).text();
  report.reason = ReasonOf(schema, call);
  return report;
}

void SetOutcome(EndRecord& end, CallReport& report) {
  report.ended = true;
  report.result = end.result;
  report.message = std::move(end.text);
  report.microseconds = end.microseconds;
  report.datastore_calls = end.datastore_calls;
  report.log = std::move(end.log);
  report.faults = std::move(end.faults);
}

// The verdict that follows from how the calls ended; a failure of the plug-in outweighs what it
// answered before.
void Judge(const PluginRun& run, TransactionReport& report) {
  if (!run.failure.empty()) {
    report.verdict = Verdict::kPluginFailure;
    report.diagnostic = run.failure;
    if (run.in_call) report.decisive = *run.in_call;
    return;
  }
  if (report.calls.empty()) return;
  const int result = report.calls.back().result;
  if (result == CONFD_OK || result == CONFD_VALIDATION_WARN) return;
  report.decisive = report.calls.size() - 1;
  if (result == CONFD_ERR) {
    report.verdict = Verdict::kRejected;
  } else {
    report.verdict = Verdict::kPluginFailure;
    report.diagnostic = "validate returned " + std::to_string(result);
  }
}

}  // namespace

const char* NameOf(Verdict verdict) {
  switch (verdict) {
    case Verdict::kAccepted:
      return "accepted";
    case Verdict::kRejected:
      return "rejected";
    case Verdict::kPluginFailure:
      break;
  }
  return "plugin-failure";
}

TransactionReport RunTransaction(const std::shared_ptr<const confd::Snapshot>& running,
                                 const std::shared_ptr<const confd::Snapshot>& candidate,
                                 const TransactionOptions& options) {
  const std::vector<TriggeredCall> calls = FindTriggeredCalls(*running, *candidate);
  const PluginTask task{
      options.plugin, running, candidate, {calls.begin(), calls.end()}, options.log};
  PluginRun run = RunPlugin(task, options.timeout);

  TransactionReport report;
  report.stage = run.stage;
  report.output = std::move(run.output);
  report.open_cursors = run.open_cursors;
  for (EndRecord& end : run.ended) {
    SetOutcome(end, report.calls.emplace_back(Describe(candidate->schema(), calls[end.call])));
  }
  if (run.in_call) {
    report.calls.push_back(Describe(candidate->schema(), calls[*run.in_call]));
  }
  Judge(run, report);
  return report;
}

}  // namespace ipvald
