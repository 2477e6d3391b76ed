#include "nearest_word.h"

#include <algorithm>
#include <cstddef>

namespace ipvald {
namespace {

constexpr size_t kMaxErrors = 2;

// Damerau and Levenshtein's distance of two texts, in which no part is changed twice.
size_t Distance(std::string_view a, std::string_view b) {
  using Row = std::vector<size_t>;  // distances of a beginning of `a` to each beginning of `b`
  Row before_last;
  Row last;
  Row row(b.size() + 1);
  for (size_t j = 0; j <= b.size(); ++j) row[j] = j;
  for (size_t i = 1; i <= a.size(); ++i) {
    before_last = std::move(last);
    last = row;
    row[0] = i;
    for (size_t j = 1; j <= b.size(); ++j) {
      const size_t replaced = last[j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1);
      row[j] = std::min({replaced, last[j] + 1, row[j - 1] + 1});
      const bool swapped = i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1];
      if (swapped) row[j] = std::min(row[j], before_last[j - 2] + 1);
    }
  }
  return row[b.size()];
}

}  // namespace

std::string NearestWord(std::string_view typed, const std::vector<std::string>& known) {
  std::string nearest;
  size_t limit = std::max(kMaxErrors, typed.size() / 3);
  for (const std::string& word : known) {
    const size_t distance = Distance(typed, word);
    if (distance > limit || (distance == limit && !nearest.empty())) continue;
    limit = distance;
    nearest = word;
  }
  return nearest;
}

}  // namespace ipvald
