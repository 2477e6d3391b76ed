#include "check.h"

#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <list>
#include <memory>
#include <string>
#include <utility>

#include "configuration_file.h"
#include "data_model.h"
#include "exit_status.h"
#include "reading_deadline.h"
#include "report_json.h"
#include "report_text.h"
#include "standard_output.h"
#include "transaction.h"

namespace ipvald {
namespace {

bool UseColor(Color color) {
  if (color != Color::kAuto) return color == Color::kAlways;
  const char* no_color = std::getenv("NO_COLOR");
  if (no_color != nullptr && *no_color != '\0') return false;
  return isatty(STDOUT_FILENO) == 1;
}

// The process ends soon. To take a large tree apart node by node would take it a good part of the
// time that reading the tree took.
const Configuration& KeepUntilExit(Configuration configuration) {
  static auto* const kept = new std::list<Configuration>();
  return kept->emplace_back(std::move(configuration));
}

Configuration ReadInTime(const std::shared_ptr<const store::Schema>& schema,
                         const std::string& file, std::chrono::seconds limit) {
  const ReadingDeadline deadline(file, limit, kNoVerdict);
  return ReadConfiguration(schema, file);
}

}  // namespace

int RunCheck(const Options& options) {
  const CheckOptions& check = options.check;
  const auto schema = LoadDataModel(options.yang);
  const std::chrono::seconds timeout(check.timeout);
  const Configuration& running =
      KeepUntilExit(check.running ? ReadInTime(schema, *check.running, timeout)
                                  : Configuration{store::Snapshot::Empty(schema), {}});
  const Configuration& candidate = KeepUntilExit(ReadInTime(schema, check.candidate, timeout));
  const TransactionReport report =
      RunTransaction(running.snapshot, candidate.snapshot, {check.plugin, timeout, check.trace});
  Print(options.format == Format::kJson ? JsonReport(report)
                                        : TextReport(report, {check.trace, UseColor(check.color)}));
  return StatusOf(report.verdict);
}

}  // namespace ipvald
