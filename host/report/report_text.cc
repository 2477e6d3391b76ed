#include "report_text.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <string_view>

#include "one_line.h"
#include "store/schema_node.h"

namespace ipvald {
namespace {

constexpr size_t kShownOutputLines = 20;  // of what a plug-in wrote before it failed; the last ones

using Text = fmt::memory_buffer;

template <typename... Args>
void Append(Text& text, fmt::format_string<Args...> format, Args&&... args) {
  fmt::format_to(std::back_inserter(text), format, std::forward<Args>(args)...);
}

void AppendLabelled(Text& text, std::string_view label, std::string_view value) {
  Append(text, "{:<12}{}\n", fmt::format("{}:", label), value);
}

const char* ColorOf(Verdict verdict) {
  switch (verdict) {
    case Verdict::kAccepted:
      return "\x1b[32m";  // green
    case Verdict::kRejected:
      return "\x1b[31m";  // red
    case Verdict::kPluginFailure:
      break;
  }
  return "\x1b[35m";  // magenta
}

void AppendVerdict(Text& text, const TransactionReport& report, bool color) {
  if (color) {
    Append(text, "{}{}\x1b[0m\n", ColorOf(report.verdict), NameOf(report.verdict));
  } else {
    Append(text, "{}\n", NameOf(report.verdict));
  }
}

std::vector<std::string_view> LastLines(std::string_view output, size_t count) {
  std::vector<std::string_view> lines;
  while (!output.empty()) {
    const size_t end = std::min(output.find('\n'), output.size());
    if (end > 0) lines.push_back(output.substr(0, end));
    output.remove_prefix(std::min(end + 1, output.size()));
  }
  if (lines.size() > count) lines.erase(lines.begin(), lines.end() - static_cast<ptrdiff_t>(count));
  return lines;
}

void AppendOutput(Text& text, const TransactionReport& report) {
  for (const std::string_view line : LastLines(report.output, kShownOutputLines)) {
    AppendLabelled(text, "output", OneLine(line));
  }
}

void AppendDecision(Text& text, const TransactionReport& report) {
  if (report.decisive) {
    const CallReport& call = report.calls[*report.decisive];
    AppendLabelled(text, "point", call.point);
    AppendLabelled(text, "path", call.path);
    if (report.verdict == Verdict::kRejected) {
      AppendLabelled(text, "message", call.message ? *call.message : "(refused without a message)");
    }
  } else if (report.verdict == Verdict::kPluginFailure) {
    AppendLabelled(text, "stage", report.stage);
  }
  if (report.verdict == Verdict::kPluginFailure) {
    AppendLabelled(text, "diagnostic", report.diagnostic);
    AppendOutput(text, report);
  }
}

void AppendWarnings(Text& text, const TransactionReport& report) {
  for (const CallReport& call : report.calls) {
    if (call.answer != Answer::kWarning) continue;
    AppendLabelled(text, "warning",
                   fmt::format("{} {}: {}", call.point, call.path,
                               call.message ? *call.message : "(no message)"));
  }
}

std::string ResultOf(const CallReport& call) {
  switch (call.answer) {
    case Answer::kNone:
      return "failed";
    case Answer::kAccepted:
      return "accepted";
    case Answer::kWarning:
      return "warning";
    case Answer::kRejected:
      return "rejected";
    case Answer::kOther:
      break;
  }
  return fmt::format("returned {}", call.result);
}

void AppendTrace(Text& text, const TransactionReport& report) {
  if (report.calls.empty()) Append(text, "\nno validation point concerned\n");
  size_t number = 0;
  for (const CallReport& call : report.calls) {
    Append(text, "{}{}. {} {}\n", number == 0 ? "\n" : "", number + 1, call.point, call.path);
    ++number;
    Append(text, "   {}: {}", call.reason, ResultOf(call));
    if (call.answer != Answer::kNone) {
      Append(text, ", {} us, {} data-store calls", call.microseconds, call.datastore_calls);
    }
    Append(text, "\n");
    for (const std::string& line : call.log) Append(text, "   log: {}\n", OneLine(line));
    for (const FaultReport& fault : call.faults) {
      Append(text, "   fault: level {} {} {}:{} {}\n", fault.level, fault.function, fault.file,
             fault.line, OneLine(fault.message));
    }
  }
  if (report.open_cursors != 0) Append(text, "cursors left open: {}\n", report.open_cursors);
  if (report.verdict != Verdict::kPluginFailure) AppendOutput(text, report);
}

std::string DependenciesOf(const store::ValidationPoint& point) {
  if (point.dependencies.empty()) return "(every validation)";
  std::string text;
  for (const store::Dependency& dependency : point.dependencies) {
    if (!text.empty()) text += ", ";
    text += store::SchemaPath(dependency.node);
    if (dependency.absolute) text += " (absolute)";
  }
  return text;
}

}  // namespace

std::string TextReport(const TransactionReport& report, const TextOptions& options) {
  Text text;
  AppendVerdict(text, report, options.color);
  AppendDecision(text, report);
  AppendWarnings(text, report);
  if (options.trace) AppendTrace(text, report);
  return fmt::to_string(text);
}

std::string TextPoints(const std::vector<store::ValidationPoint>& points) {
  using Row = std::array<std::string, 5>;
  std::vector<Row> rows = {{"POINT", "NODE", "CALL-ONCE", "PRIORITY", "DEPENDENCIES"}};
  for (const store::ValidationPoint& point : points) {
    rows.push_back({point.opaque, store::SchemaPath(point.node), point.call_once ? "yes" : "no",
                    std::to_string(point.priority), DependenciesOf(point)});
  }
  std::array<size_t, 5> widths{};
  for (const Row& row : rows) {
    for (size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], row[i].size());
  }
  Text text;
  for (const Row& row : rows) {
    for (size_t i = 0; i + 1 < row.size(); ++i) Append(text, "{:<{}}  ", row[i], widths[i]);
    Append(text, "{}\n", row.back());
  }
  return fmt::to_string(text);
}

}  // namespace ipvald
