// Verdicts and validation points as text for people.
#ifndef HOST_REPORT_REPORT_TEXT_H_
#define HOST_REPORT_REPORT_TEXT_H_

#include <string>
#include <vector>

#include "store/schema.h"
#include "transaction_report.h"

namespace ipvald {

struct TextOptions {
  bool trace = false;  // list the calls after the verdict
  bool color = false;  // colour the verdict with terminal sequences
};

/// The verdict on the first line, then what led to it on labelled lines. The plug-in's message
/// stands as it set it.
std::string TextReport(const TransactionReport& report, const TextOptions& options);

/// A table with a row for each validation statement of the data model.
std::string TextPoints(const std::vector<store::ValidationPoint>& points);

}  // namespace ipvald

#endif  // HOST_REPORT_REPORT_TEXT_H_
