// Changes to a text that leave every line where it is.
#ifndef HOST_INPUT_TEXT_EDITS_H_
#define HOST_INPUT_TEXT_EDITS_H_

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace ipvald {

/// Replacements in one text, made in ascending order and carried out all at once. Whoever replaces
/// line ends sees to it that the lines behind keep their numbers.
class TextEdits {
 public:
  /// Puts `replacement` in the place of the bytes from `begin` to `end`.
  /// REQUIRES: `begin` is not before the end of the last edit.
  void Replace(size_t begin, size_t end, std::string replacement);

  /// Puts blanks there, but leaves line ends.
  void Blank(std::string_view text, size_t begin, size_t end);

  /// Takes back the edits that begin at `begin` or behind.
  void DropFrom(size_t begin);

  /// `text` with all edits.
  std::string Apply(std::string text) const;

 private:
  struct Edit {
    size_t begin;
    size_t end;
    std::string replacement;
  };

  std::vector<Edit> edits_;
};

}  // namespace ipvald

#endif  // HOST_INPUT_TEXT_EDITS_H_
