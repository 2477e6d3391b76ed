#include "transaction_report.h"

namespace ipvald {

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

}  // namespace ipvald
