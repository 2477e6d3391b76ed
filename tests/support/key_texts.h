// Key texts that the data model does not allow, for tests of how the plug-in converts them. The
// function confd_pp_value that key_texts.cc defines wins over the one of libconfd in the program
// that links it (ENABLE_EXPORTS), also for a module that the program loads.
#ifndef TESTS_SUPPORT_KEY_TEXTS_H_
#define TESTS_SUPPORT_KEY_TEXTS_H_

#include <map>
#include <string>

namespace tests {

/// In force while it lives; one at a time.
class KeyTexts {
 public:
  KeyTexts();
  ~KeyTexts();
  KeyTexts(const KeyTexts&) = delete;
  KeyTexts& operator=(const KeyTexts&) = delete;

  /// What is printed instead of a text; a text that is not here stays.
  std::map<std::string, std::string> instead_of;
};

}  // namespace tests

#endif  // TESTS_SUPPORT_KEY_TEXTS_H_
