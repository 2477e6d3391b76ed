#include "text_edits.h"

#include <utility>

namespace ipvald {

void TextEdits::Replace(size_t begin, size_t end, std::string replacement) {
  edits_.push_back({begin, end, std::move(replacement)});
}

void TextEdits::Blank(std::string_view text, size_t begin, size_t end) {
  std::string blanks(text.substr(begin, end - begin));
  for (char& c : blanks) {
    if (c != '\n') c = ' ';
  }
  Replace(begin, end, std::move(blanks));
}

void TextEdits::DropFrom(size_t begin) {
  while (!edits_.empty() && edits_.back().begin >= begin) edits_.pop_back();
}

std::string TextEdits::Apply(std::string text) const {
  if (edits_.empty()) return text;
  std::string edited;
  edited.reserve(text.size());
  size_t copied = 0;
  for (const Edit& edit : edits_) {
    edited.append(text, copied, edit.begin - copied).append(edit.replacement);
    copied = edit.end;
  }
  return edited.append(text, copied);
}

}  // namespace ipvald
