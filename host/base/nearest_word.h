// Which known word a mistyped one was meant to be.
#ifndef HOST_BASE_NEAREST_WORD_H_
#define HOST_BASE_NEAREST_WORD_H_

#include <string>
#include <string_view>
#include <vector>

namespace ipvald {

/// Of `known` the word that is fewest characters away from `typed`, the first of several; a
/// character too few, too many or another one counts one, and so do two neighbours in the other
/// order. What is more than two characters away and more than a third of `typed` is no typing
/// error.
/// @returns "" when there is none
std::string NearestWord(std::string_view typed, const std::vector<std::string>& known);

}  // namespace ipvald

#endif  // HOST_BASE_NEAREST_WORD_H_
