// ipvald check: the verdict on a change.
#ifndef HOST_COMMAND_CHECK_H_
#define HOST_COMMAND_CHECK_H_

#include "options.h"

namespace ipvald {

/// Reads the configurations, runs the transaction and prints its report.
/// @returns the exit status
/// @throws InputError, OutputError, Interrupted, std::system_error
int RunCheck(const Options& options);

}  // namespace ipvald

#endif  // HOST_COMMAND_CHECK_H_
