// Reports made by hand, for tests of what is made of them.
#ifndef TESTS_HOST_REPORT_SAMPLE_REPORTS_H_
#define TESTS_HOST_REPORT_SAMPLE_REPORTS_H_

#include <memory>
#include <vector>

#include "support/data_model.h"
#include "transaction_report.h"

namespace ipvald {

/// A call that the plug-in accepted.
inline CallReport AcceptedCall() {
  CallReport call;
  call.point = "intf_vrf_validation";
  call.id = "vp-intf-vrf";
  call.path = "/config/interface/l3{7}/vrf";
  call.reason = "changed /config/interface/l3{7}/vrf";
  call.answer = Answer::kAccepted;
  call.microseconds = 12;
  call.datastore_calls = 3;
  return call;
}

/// A call that the plug-in refused, for an operator to read why.
inline CallReport RejectedCall() {
  CallReport call;
  call.point = "nd_ra_validation";
  call.id = "vp-nd-ra";
  call.path = "/config/interface/l3{7}/ipv6/nd/ra";
  call.reason = "created /config/interface/l3{7}";
  call.answer = Answer::kRejected;
  call.result = -1;
  call.message = "too long\nfor one line";
  call.microseconds = 1234567890123;
  call.datastore_calls = 4294967296;
  return call;
}

/// A call that the plug-in accepted with a warning.
inline CallReport WarningCall() {
  CallReport call = AcceptedCall();
  call.answer = Answer::kWarning;
  call.result = -3;
  call.message = "think twice";
  return call;
}

/// A call that the plug-in failed in. What only a call that came back has is set all the same, as
/// it is not to be shown.
inline CallReport FailedCall() {
  CallReport call = AcceptedCall();
  call.answer = Answer::kNone;
  call.result = 5;
  return call;
}

inline TransactionReport Rejected() {
  TransactionReport report;
  report.verdict = Verdict::kRejected;
  report.calls = {AcceptedCall(), RejectedCall()};
  report.decisive = 1;
  return report;
}

/// The plug-in did not come back from its second call.
inline TransactionReport FailedInACall() {
  TransactionReport report;
  report.verdict = Verdict::kPluginFailure;
  report.calls = {AcceptedCall(), FailedCall()};
  report.decisive = 1;
  report.diagnostic = "no answer within 1 s";
  report.output = "first\n\nsecond\x1b[1m";
  return report;
}

/// The plug-in failed before its first call.
inline TransactionReport FailedInAStage() {
  TransactionReport report;
  report.verdict = Verdict::kPluginFailure;
  report.diagnostic = "lib_init returned 7";
  report.stage = "lib_init";
  return report;
}

/// A call with all that may stand beside an answer.
inline TransactionReport AcceptedWithLogAndFaults() {
  TransactionReport report;
  report.calls = {AcceptedCall(), AcceptedCall()};
  report.calls[1].log = {"first\nline", ""};
  report.calls[1].faults = {{2, "Function", "file.cc", 12, "a fault\nof two lines"},
                            {-1, "", "", 0, ""}};
  report.output = "said\n";
  report.open_cursors = 4294967295;
  return report;
}

/// Two statements at the list /config/interface/l3 of the data model. The second has nothing but
/// what it must have.
inline std::vector<store::ValidationPoint> TwoPoints() {
  const lysc_node* l3 = nullptr;
  for (const store::ValidationPoint& point : tests::DataModel()->validation_points()) {
    if (point.opaque == "intf_l3_name_validation") l3 = point.node;
  }
  store::ValidationPoint full{"id-1", "longer_than_its_heading", true, -5, {}, l3};
  full.dependencies = {{l3, false}, {l3, true}};
  return {full, {"id-2", "p", false, 0, {}, l3}};
}

}  // namespace ipvald

#endif  // TESTS_HOST_REPORT_SAMPLE_REPORTS_H_
