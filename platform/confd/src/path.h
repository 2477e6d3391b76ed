// Path texts: from a format and its arguments to a place in a configuration.
#ifndef PLATFORM_CONFD_PATH_H_
#define PLATFORM_CONFD_PATH_H_

#include <array>
#include <cstdarg>
#include <memory>
#include <memory_resource>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "store/place.h"
#include "store/snapshot.h"

namespace confd {

/// A path formatted from a format and its arguments: %s %d %u %x %*x %h %*h %ip4 %ip6 %%. Anything
/// else is an error. Paths of usual length take no memory from the heap, as every call makes one.
///
/// A path that a program assembled can be the format itself, and then a "%" in one of its keys
/// looks like a conversion, for which nobody passed an argument. How many there are cannot be told
/// in C, but whether the format is a constant of a program can. So only these formats read
/// arguments: constants, and what begins with a conversion, as no path does. Any other with a
/// conversion, except %%, is an error, whatever the configuration holds.
class FormattedPath {
 public:
  FormattedPath(const char* format, va_list args);
  FormattedPath(const FormattedPath&) = delete;
  FormattedPath& operator=(const FormattedPath&) = delete;

  /// Whether there was no error; otherwise CONFD_ERR_BADPATH is set and the text is empty.
  bool is_valid() const { return is_valid_; }
  std::string_view view() const { return text_; }

 private:
  bool Append(const char* format, va_list args);

  std::array<char, 256> memory_;
  std::pmr::monotonic_buffer_resource resource_{memory_.data(), memory_.size()};
  std::pmr::string text_{&resource_};
  bool is_valid_ = false;
};

/// The path looked up last: the next one mostly differs from it in its last steps only.
struct LastPath {
  struct Step {
    size_t end;  // in `text`
    store::Place place;
  };
  std::string text;
  std::vector<Step> steps;  // as many as could be read
};

/// A configuration as calls read it.
struct SearchedSnapshot {
  std::shared_ptr<const store::Snapshot> snapshot;
  LastPath last_path = {};
};

/// Looks `text` up: absolute or from the root, a key text taken as it stands between the braces
/// (blanks at its ends do not count), several keys separated by blanks, a key in double quotes with
/// \" and \\ inside.
/// @returns nothing on an error, with CONFD_ERR_BADPATH set.
std::optional<store::Place> FindPlace(SearchedSnapshot& configuration, std::string_view text);

/// The same for one path of a snapshot.
std::optional<store::Place> FindPlace(const store::Snapshot& snapshot, std::string_view text);

}  // namespace confd

#endif  // PLATFORM_CONFD_PATH_H_
