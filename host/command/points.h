// ipvald points: the validation points of the data model.
#ifndef HOST_COMMAND_POINTS_H_
#define HOST_COMMAND_POINTS_H_

#include "options.h"

namespace ipvald {

/// Prints a row for each validation statement of the data model.
/// @returns the exit status
/// @throws InputError, OutputError
int RunPoints(const Options& options);

}  // namespace ipvald

#endif  // HOST_COMMAND_POINTS_H_
