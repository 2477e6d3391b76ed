// How ipvald ends: statuses that scripts rely on.
#ifndef HOST_COMMAND_EXIT_STATUS_H_
#define HOST_COMMAND_EXIT_STATUS_H_

#include "transaction_report.h"

namespace ipvald {

inline constexpr int kDone = 0;       // accepted, or what was asked for is printed
inline constexpr int kRejected = 1;   // the plug-in refuses the configuration
inline constexpr int kNoVerdict = 2;  // usage, input, limits, output
inline constexpr int kPluginFailed = 3;

/// The status of a command that ends with this verdict.
constexpr int StatusOf(Verdict verdict) {
  switch (verdict) {
    case Verdict::kAccepted:
      return kDone;
    case Verdict::kRejected:
      return kRejected;
    case Verdict::kPluginFailure:
      break;
  }
  return kPluginFailed;
}

/// The status of a command that a signal ended, as shells have it.
constexpr int StatusOfSignal(int signal) { return 128 + signal; }

}  // namespace ipvald

#endif  // HOST_COMMAND_EXIT_STATUS_H_
