// Answers of a ConfD that the configuration store does not give: unusual results and values of
// other types. The functions that maapi_answers.cc defines win over those of libconfd in the
// program that links it; what has no answer here goes on to libconfd.
#ifndef TESTS_SUPPORT_MAAPI_ANSWERS_H_
#define TESTS_SUPPORT_MAAPI_ANSWERS_H_

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "confd_lib.h"

namespace tests {

/// What the calls answer for one path.
struct MaapiAnswer {
  std::optional<int> exists = {};  ///< result of maapi_exists
  std::optional<int> read = {};    ///< result of maapi_get_elem and of the reads of an address
  std::optional<confd_value_t> value = {};  ///< what the read stores, a copy; whatever its result
};

/// In force while it lives; one at a time.
class MaapiAnswers {
 public:
  MaapiAnswers();
  ~MaapiAnswers();
  MaapiAnswers(const MaapiAnswers&) = delete;
  MaapiAnswers& operator=(const MaapiAnswers&) = delete;

  std::map<std::string, MaapiAnswer> by_path;

  /// What was called with a path, whoever answered: function, blank, format as passed.
  std::vector<std::string> formats;
};

}  // namespace tests

#endif  // TESTS_SUPPORT_MAAPI_ANSWERS_H_
