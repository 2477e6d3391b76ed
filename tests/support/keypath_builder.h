// Keypaths for tests that have no data model at hand.
#ifndef TESTS_SUPPORT_KEYPATH_BUILDER_H_
#define TESTS_SUPPORT_KEYPATH_BUILDER_H_

#include <cstdint>
#include <deque>
#include <string>

#include "confd_lib.h"

namespace tests {

/// Grows by one element per call, deepest element first:
///
///   KeypathBuilder().Tag(ra).Tag(nd).Tag(ipv6).Key("7").Tag(ipapp_l3)
class KeypathBuilder {
 public:
  KeypathBuilder() {
    for (auto& element : keypath_.v) {
      for (confd_value_t& value : element) value.type = C_NOEXISTS;
    }
  }
  KeypathBuilder(const KeypathBuilder&) = delete;
  KeypathBuilder& operator=(const KeypathBuilder&) = delete;

  KeypathBuilder& Tag(uint32_t tag, uint32_t ns = 1) {
    CONFD_SET_XMLTAG(&keypath_.v[keypath_.len][0], tag, ns);
    ++keypath_.len;
    return *this;
  }

  KeypathBuilder& Key(const std::string& text) {
    std::string& kept = keys_.emplace_back(text);
    CONFD_SET_BUF(&keypath_.v[keypath_.len][0], reinterpret_cast<unsigned char*>(kept.data()),
                  static_cast<unsigned int>(kept.size()));
    ++keypath_.len;
    return *this;
  }

  confd_hkeypath_t* get() { return &keypath_; }

 private:
  confd_hkeypath_t keypath_{};
  std::deque<std::string> keys_;  // their text does not move
};

}  // namespace tests

#endif  // TESTS_SUPPORT_KEYPATH_BUILDER_H_
