// Reports as JSON for programs, to the last byte.
#include "report_json.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>

#include "host/report/sample_reports.h"

namespace ipvald {
namespace {

TransactionReport NotUtf8() {
  TransactionReport report = FailedInAStage();
  report.diagnostic =
      "\xff"
      "a\xc3";
  report.stage = "lib\x01_init";
  report.output = "\xe4\xed\xa0\x80\n";
  return report;
}

TransactionReport RejectedBehindAWarning() {
  TransactionReport report;
  report.verdict = Verdict::kRejected;
  report.calls = {WarningCall(), RejectedCall()};
  report.calls[1].message.reset();
  report.decisive = 1;
  return report;
}

TransactionReport WarningWithoutMessage() {
  TransactionReport report;
  report.calls = {WarningCall()};
  report.calls[0].message.reset();
  return report;
}

// AcceptedCall in a list of calls.
const std::string kAccepted = R"(    {
      "point": "intf_vrf_validation",
      "id": "vp-intf-vrf",
      "path": "/config/interface/l3{7}/vrf",
      "reason": "changed /config/interface/l3{7}/vrf",
      "result": 0,
      "message": null,
      "microseconds": 12,
      "datastore_calls": 3,
      "log": []
    })";

// A verdict that no call decided and no failure led to.
const std::string kUndecided = R"("point": null,
  "id": null,
  "path": null,
  "message": null,
  "diagnostic": null,
  "stage": null,
)";

// WarningCall in a list of calls.
std::string WarningAs(const std::string& message) {
  return R"(    {
      "point": "intf_vrf_validation",
      "id": "vp-intf-vrf",
      "path": "/config/interface/l3{7}/vrf",
      "reason": "changed /config/interface/l3{7}/vrf",
      "result": -3,
      "message": )" +
         message + R"(,
      "microseconds": 12,
      "datastore_calls": 3,
      "log": []
    })";
}

struct JsonCase {
  const char* name;
  TransactionReport report;
  std::string text;
};

std::ostream& operator<<(std::ostream& out, const JsonCase& row) { return out << row.name; }

const JsonCase kTexts[] = {
    {"AcceptedWithoutCalls", {}, R"({
  "verdict": "accepted",
  )" + kUndecided + R"(  "output": "",
  "warnings": [],
  "calls": [],
  "faults": [],
  "open_cursors": 0
}
)"},
    {"Rejected", Rejected(), R"({
  "verdict": "rejected",
  "point": "nd_ra_validation",
  "id": "vp-nd-ra",
  "path": "/config/interface/l3{7}/ipv6/nd/ra",
  "message": "too long\nfor one line",
  "diagnostic": null,
  "stage": null,
  "output": "",
  "warnings": [],
  "calls": [
)" + kAccepted + R"(,
    {
      "point": "nd_ra_validation",
      "id": "vp-nd-ra",
      "path": "/config/interface/l3{7}/ipv6/nd/ra",
      "reason": "created /config/interface/l3{7}",
      "result": -1,
      "message": "too long\nfor one line",
      "microseconds": 1234567890123,
      "datastore_calls": 4294967296,
      "log": []
    }
  ],
  "faults": [],
  "open_cursors": 0
}
)"},
    {"RejectedWithoutAMessageBehindAWarning", RejectedBehindAWarning(), R"({
  "verdict": "rejected",
  "point": "nd_ra_validation",
  "id": "vp-nd-ra",
  "path": "/config/interface/l3{7}/ipv6/nd/ra",
  "message": null,
  "diagnostic": null,
  "stage": null,
  "output": "",
  "warnings": [
    {
      "point": "intf_vrf_validation",
      "path": "/config/interface/l3{7}/vrf",
      "message": "think twice"
    }
  ],
  "calls": [
)" + WarningAs("\"think twice\"") + R"(,
    {
      "point": "nd_ra_validation",
      "id": "vp-nd-ra",
      "path": "/config/interface/l3{7}/ipv6/nd/ra",
      "reason": "created /config/interface/l3{7}",
      "result": -1,
      "message": null,
      "microseconds": 1234567890123,
      "datastore_calls": 4294967296,
      "log": []
    }
  ],
  "faults": [],
  "open_cursors": 0
}
)"},
    {"WarningWithoutAMessage", WarningWithoutMessage(), R"({
  "verdict": "accepted",
  )" + kUndecided + R"(  "output": "",
  "warnings": [
    {
      "point": "intf_vrf_validation",
      "path": "/config/interface/l3{7}/vrf",
      "message": null
    }
  ],
  "calls": [
)" + WarningAs("null") + R"(
  ],
  "faults": [],
  "open_cursors": 0
}
)"},
    {"FailureInACall", FailedInACall(), R"({
  "verdict": "plugin-failure",
  "point": "intf_vrf_validation",
  "id": "vp-intf-vrf",
  "path": "/config/interface/l3{7}/vrf",
  "message": null,
  "diagnostic": "no answer within 1 s",
  "stage": null,
  "output": "first\n\nsecond\u001b[1m",
  "warnings": [],
  "calls": [
)" + kAccepted + R"(,
    {
      "point": "intf_vrf_validation",
      "id": "vp-intf-vrf",
      "path": "/config/interface/l3{7}/vrf",
      "reason": "changed /config/interface/l3{7}/vrf",
      "result": null,
      "message": null,
      "microseconds": null,
      "datastore_calls": null,
      "log": []
    }
  ],
  "faults": [],
  "open_cursors": 0
}
)"},
    // A byte that begins no character and each part of one that is broken off become U+FFFD.
    {"FailureInAStageWithTextsThatAreNotUtf8", NotUtf8(),
     "{\n"
     "  \"verdict\": \"plugin-failure\",\n"
     "  \"point\": null,\n"
     "  \"id\": null,\n"
     "  \"path\": null,\n"
     "  \"message\": null,\n"
     "  \"diagnostic\": \"\xef\xbf\xbd"
     "a\xef\xbf\xbd\",\n"
     "  \"stage\": \"lib\\u0001_init\",\n"
     "  \"output\": \"\xef\xbf\xbd\xef\xbf\xbd\xef\xbf\xbd\xef\xbf\xbd\\n\",\n"
     "  \"warnings\": [],\n"
     "  \"calls\": [],\n"
     "  \"faults\": [],\n"
     "  \"open_cursors\": 0\n"
     "}\n"},
    {"LogFaultsCursorsAndOutput", AcceptedWithLogAndFaults(), R"({
  "verdict": "accepted",
  )" + kUndecided + R"(  "output": "said\n",
  "warnings": [],
  "calls": [
)" + kAccepted + R"(,
    {
      "point": "intf_vrf_validation",
      "id": "vp-intf-vrf",
      "path": "/config/interface/l3{7}/vrf",
      "reason": "changed /config/interface/l3{7}/vrf",
      "result": 0,
      "message": null,
      "microseconds": 12,
      "datastore_calls": 3,
      "log": [
        "first\nline",
        ""
      ]
    }
  ],
  "faults": [
    {
      "call": 1,
      "level": 2,
      "function": "Function",
      "file": "file.cc",
      "line": 12,
      "message": "a fault\nof two lines"
    },
    {
      "call": 1,
      "level": -1,
      "function": "",
      "file": "",
      "line": 0,
      "message": ""
    }
  ],
  "open_cursors": 4294967295
}
)"},
};

class Json : public testing::TestWithParam<JsonCase> {};

TEST_P(Json, IsWritten) { EXPECT_EQ(JsonReport(GetParam().report), GetParam().text); }

INSTANTIATE_TEST_SUITE_P(Reports, Json, testing::ValuesIn(kTexts),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(JsonOfPoints, IsAnEmptyArrayWithoutPoints) { EXPECT_EQ(JsonPoints({}), "[]\n"); }

TEST(JsonOfPoints, IsAnObjectForEach) {
  EXPECT_EQ(JsonPoints(TwoPoints()), R"([
  {
    "point": "longer_than_its_heading",
    "id": "id-1",
    "node": "/config/interface/l3",
    "call_once": true,
    "priority": -5,
    "dependencies": [
      {
        "path": "/config/interface/l3",
        "absolute": false
      },
      {
        "path": "/config/interface/l3",
        "absolute": true
      }
    ]
  },
  {
    "point": "p",
    "id": "id-2",
    "node": "/config/interface/l3",
    "call_once": false,
    "priority": 0,
    "dependencies": []
  }
]
)");
}

}  // namespace
}  // namespace ipvald
