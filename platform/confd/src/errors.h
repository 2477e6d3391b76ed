// How a function of the library reports a failure.
#ifndef PLATFORM_CONFD_ERRORS_H_
#define PLATFORM_CONFD_ERRORS_H_

#include <libyang/log.h>

#include <string>

namespace confd {

/// Sets confd_errno and the text of confd_lasterr.
/// @returns CONFD_ERR, for the caller to return.
int Fail(int code, std::string detail);

/// For a result of libyang that is no success: when it says that memory was lacking, no folder and
/// no configuration is to blame.
/// @throws std::bad_alloc
void ThrowIfOutOfMemory(LY_ERR result);

}  // namespace confd

#endif  // PLATFORM_CONFD_ERRORS_H_
