// The formats of error texts. error_formats.cc defines confd_trans_seterr, which wins over that of
// libconfd in the program that links it, notes the format and goes on to libconfd.
#ifndef TESTS_SUPPORT_ERROR_FORMATS_H_
#define TESTS_SUPPORT_ERROR_FORMATS_H_

#include <string>
#include <vector>

namespace tests {

/// As passed, one for each call; whoever looks at them clears them.
extern std::vector<std::string> error_formats;

}  // namespace tests

#endif  // TESTS_SUPPORT_ERROR_FORMATS_H_
