// Reports as text for people, to the last byte.
#include "report_text.h"

#include <gtest/gtest.h>

#include <optional>
#include <ostream>
#include <string>
#include <utility>

#include "host/report/sample_reports.h"

namespace ipvald {
namespace {

constexpr TextOptions kPlain;
constexpr TextOptions kTrace{.trace = true};
constexpr TextOptions kColor{.color = true};

TransactionReport With(CallReport call) {
  TransactionReport report;
  report.calls = {std::move(call)};
  return report;
}

TransactionReport RejectedWithout(std::optional<std::string> message) {
  TransactionReport report = Rejected();
  report.calls[1].message = std::move(message);
  return report;
}

CallReport WarningWithoutMessage() {
  CallReport call = WarningCall();
  call.message.reset();
  return call;
}

TransactionReport Returned7() {
  TransactionReport report = With(AcceptedCall());
  report.verdict = Verdict::kPluginFailure;
  report.calls[0].answer = Answer::kOther;
  report.calls[0].result = 7;
  report.decisive = 0;
  report.diagnostic = "validate returned 7";
  return report;
}

TransactionReport FailedWithOutput(const std::string& output) {
  TransactionReport report = FailedInAStage();
  report.output = output;
  return report;
}

// Lines 1 to `count`, and what is shown of each.
std::string Lines(int first, int last, const std::string& label) {
  std::string lines;
  for (int i = first; i <= last; ++i) lines += label + "line " + std::to_string(i) + "\n";
  return lines;
}

const char kStage[] =
    "plugin-failure\n"
    "stage:      lib_init\n"
    "diagnostic: lib_init returned 7\n";

struct TextCase {
  const char* name;
  TransactionReport report;
  TextOptions options;
  std::string text;
};

std::ostream& operator<<(std::ostream& out, const TextCase& row) { return out << row.name; }

const TextCase kTexts[] = {
    {"Accepted", With(AcceptedCall()), kPlain, "accepted\n"},
    {"AcceptedWithoutCalls", {}, kPlain, "accepted\n"},
    {"LogAndFaultsStandInTheTraceOnly", AcceptedWithLogAndFaults(), kPlain, "accepted\n"},
    {"Rejected", Rejected(), kPlain,
     "rejected\n"
     "point:      nd_ra_validation\n"
     "path:       /config/interface/l3{7}/ipv6/nd/ra\n"
     "message:    too long\nfor one line\n"},
    {"RejectedWithoutAMessage", RejectedWithout(std::nullopt), kPlain,
     "rejected\n"
     "point:      nd_ra_validation\n"
     "path:       /config/interface/l3{7}/ipv6/nd/ra\n"
     "message:    (refused without a message)\n"},
    {"RejectedWithAnEmptyMessage", RejectedWithout(""), kPlain,
     "rejected\n"
     "point:      nd_ra_validation\n"
     "path:       /config/interface/l3{7}/ipv6/nd/ra\n"
     "message:    \n"},
    {"MessageIsUnchanged", RejectedWithout(" {} \x1b[1m\xff "), kPlain,
     "rejected\n"
     "point:      nd_ra_validation\n"
     "path:       /config/interface/l3{7}/ipv6/nd/ra\n"
     "message:     {} \x1b[1m\xff \n"},
    {"Warning", With(WarningCall()), kPlain,
     "accepted\n"
     "warning:    intf_vrf_validation /config/interface/l3{7}/vrf: think twice\n"},
    {"WarningWithoutAMessage", With(WarningWithoutMessage()), kPlain,
     "accepted\n"
     "warning:    intf_vrf_validation /config/interface/l3{7}/vrf: (no message)\n"},
    {"FailureInACall", FailedInACall(), kPlain,
     "plugin-failure\n"
     "point:      intf_vrf_validation\n"
     "path:       /config/interface/l3{7}/vrf\n"
     "diagnostic: no answer within 1 s\n"
     "output:     first\n"
     "output:     second [1m\n"},
    {"FailureInAStage", FailedInAStage(), kPlain, kStage},
    {"AnswerWithoutMeaning", Returned7(), kPlain,
     "plugin-failure\n"
     "point:      intf_vrf_validation\n"
     "path:       /config/interface/l3{7}/vrf\n"
     "diagnostic: validate returned 7\n"},
    {"OutputOfEmptyLines", FailedWithOutput("\n\n"), kPlain, kStage},
    {"OutputWithoutItsLastLineEnd", FailedWithOutput("\nlast"), kPlain,
     std::string(kStage) + "output:     last\n"},
    {"TwentyLinesOfOutput", FailedWithOutput(Lines(1, 20, "")), kPlain,
     kStage + Lines(1, 20, "output:     ")},
    {"TwentyOneLinesOfOutput", FailedWithOutput(Lines(1, 21, "")), kPlain,
     kStage + Lines(2, 21, "output:     ")},
    {"EmptyLinesOfOutputDoNotCount", FailedWithOutput(Lines(1, 20, "") + "\n\n\n"), kPlain,
     kStage + Lines(1, 20, "output:     ")},
    {"GreenAccepted", {}, kColor, "\x1b[32maccepted\x1b[0m\n"},
    {"RedRejected", Rejected(), kColor,
     "\x1b[31mrejected\x1b[0m\n"
     "point:      nd_ra_validation\n"
     "path:       /config/interface/l3{7}/ipv6/nd/ra\n"
     "message:    too long\nfor one line\n"},
    {"MagentaFailure", FailedInAStage(), kColor,
     "\x1b[35mplugin-failure\x1b[0m\n"
     "stage:      lib_init\n"
     "diagnostic: lib_init returned 7\n"},
    {"TraceWithoutCalls", {}, kTrace, "accepted\n\nno validation point concerned\n"},
    {"TraceOfARejection", Rejected(), kTrace,
     "rejected\n"
     "point:      nd_ra_validation\n"
     "path:       /config/interface/l3{7}/ipv6/nd/ra\n"
     "message:    too long\nfor one line\n"
     "\n"
     "1. intf_vrf_validation /config/interface/l3{7}/vrf\n"
     "   changed /config/interface/l3{7}/vrf: accepted, 12 us, 3 data-store calls\n"
     "2. nd_ra_validation /config/interface/l3{7}/ipv6/nd/ra\n"
     "   created /config/interface/l3{7}: rejected, 1234567890123 us, 4294967296 data-store "
     "calls\n"},
    {"TraceOfAWarning", With(WarningCall()), kTrace,
     "accepted\n"
     "warning:    intf_vrf_validation /config/interface/l3{7}/vrf: think twice\n"
     "\n"
     "1. intf_vrf_validation /config/interface/l3{7}/vrf\n"
     "   changed /config/interface/l3{7}/vrf: warning, 12 us, 3 data-store calls\n"},
    {"TraceOfAFailureInACall", FailedInACall(), kTrace,
     "plugin-failure\n"
     "point:      intf_vrf_validation\n"
     "path:       /config/interface/l3{7}/vrf\n"
     "diagnostic: no answer within 1 s\n"
     "output:     first\n"
     "output:     second [1m\n"
     "\n"
     "1. intf_vrf_validation /config/interface/l3{7}/vrf\n"
     "   changed /config/interface/l3{7}/vrf: accepted, 12 us, 3 data-store calls\n"
     "2. intf_vrf_validation /config/interface/l3{7}/vrf\n"
     "   changed /config/interface/l3{7}/vrf: failed\n"},
    {"TraceOfAnAnswerWithoutMeaning", Returned7(), kTrace,
     "plugin-failure\n"
     "point:      intf_vrf_validation\n"
     "path:       /config/interface/l3{7}/vrf\n"
     "diagnostic: validate returned 7\n"
     "\n"
     "1. intf_vrf_validation /config/interface/l3{7}/vrf\n"
     "   changed /config/interface/l3{7}/vrf: returned 7, 12 us, 3 data-store calls\n"},
    {"TraceOfLogFaultsCursorsAndOutput", AcceptedWithLogAndFaults(), kTrace,
     "accepted\n"
     "\n"
     "1. intf_vrf_validation /config/interface/l3{7}/vrf\n"
     "   changed /config/interface/l3{7}/vrf: accepted, 12 us, 3 data-store calls\n"
     "2. intf_vrf_validation /config/interface/l3{7}/vrf\n"
     "   changed /config/interface/l3{7}/vrf: accepted, 12 us, 3 data-store calls\n"
     "   log: first line\n"
     "   log: \n"
     "   fault: level 2 Function file.cc:12 a fault of two lines\n"
     "   fault: level -1  :0 \n"
     "cursors left open: 4294967295\n"
     "output:     said\n"},
};

class Text : public testing::TestWithParam<TextCase> {};

TEST_P(Text, IsWritten) {
  EXPECT_EQ(TextReport(GetParam().report, GetParam().options), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(Reports, Text, testing::ValuesIn(kTexts),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(TextOfPoints, IsAHeadingWithoutPoints) {
  EXPECT_EQ(TextPoints({}), "POINT  NODE  CALL-ONCE  PRIORITY  DEPENDENCIES\n");
}

TEST(TextOfPoints, IsATable) {
  EXPECT_EQ(TextPoints(TwoPoints()),
            "POINT                    NODE                  CALL-ONCE  PRIORITY  DEPENDENCIES\n"
            "longer_than_its_heading  /config/interface/l3  yes        -5        "
            "/config/interface/l3, /config/interface/l3 (absolute)\n"
            "p                        /config/interface/l3  no         0         "
            "(every validation)\n");
}

}  // namespace
}  // namespace ipvald
