// Verdicts and validation points as JSON for programs. The field names are an interface:
// docs/verdict.md describes them.
#ifndef HOST_REPORT_REPORT_JSON_H_
#define HOST_REPORT_REPORT_JSON_H_

#include <string>
#include <vector>

#include "store/schema.h"
#include "transaction_report.h"

namespace ipvald {

/// One JSON object and a newline. Bytes that are not UTF-8 become U+FFFD.
std::string JsonReport(const TransactionReport& report);

/// One JSON array with an object for each validation statement of the data model, and a newline.
std::string JsonPoints(const std::vector<store::ValidationPoint>& points);

}  // namespace ipvald

#endif  // HOST_REPORT_REPORT_JSON_H_
