#include "transaction.h"

#include <utility>

#include "plugin_process.h"
#include "triggers.h"

namespace ipvald {
namespace {

CallReport Describe(const store::Schema& schema, const TriggeredCall& call) {
  CallReport report;
  report.point = call.point->opaque;
  report.id = call.point->id;
  report.path = KeypathOf(schema, call).text();
  report.reason = ReasonOf(schema, call);
  return report;
}

Answer AnswerOf(int result) {
  switch (result) {
    case CONFD_OK:
      return Answer::kAccepted;
    case CONFD_VALIDATION_WARN:
      return Answer::kWarning;
    case CONFD_ERR:
      return Answer::kRejected;
    default:
      return Answer::kOther;
  }
}

void SetOutcome(EndRecord& end, CallReport& report) {
  report.answer = AnswerOf(end.result);
  report.result = end.result;
  report.message = std::move(end.text);
  report.microseconds = end.microseconds;
  report.datastore_calls = end.datastore_calls;
  report.log = std::move(end.log);
  for (FaultRecord& fault : end.faults) {
    report.faults.push_back({fault.level, std::move(fault.function), std::move(fault.file),
                             fault.line, std::move(fault.message)});
  }
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
  const CallReport& last = report.calls.back();
  if (last.answer == Answer::kAccepted || last.answer == Answer::kWarning) return;
  report.decisive = report.calls.size() - 1;
  if (last.answer == Answer::kRejected) {
    report.verdict = Verdict::kRejected;
  } else {
    report.verdict = Verdict::kPluginFailure;
    report.diagnostic = "validate returned " + std::to_string(last.result);
  }
}

}  // namespace

TransactionReport RunTransaction(const std::shared_ptr<const store::Snapshot>& running,
                                 const std::shared_ptr<const store::Snapshot>& candidate,
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
