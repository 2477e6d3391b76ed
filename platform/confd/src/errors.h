// How a function of the library reports a failure.
#ifndef PLATFORM_CONFD_ERRORS_H_
#define PLATFORM_CONFD_ERRORS_H_

#include <string>

namespace confd {

/// Sets confd_errno and the text of confd_lasterr.
/// @returns CONFD_ERR, for the caller to return.
int Fail(int code, std::string detail);

}  // namespace confd

#endif  // PLATFORM_CONFD_ERRORS_H_
