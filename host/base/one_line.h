// Text from files, libraries and plug-ins, made fit for one line of a message.
#ifndef HOST_BASE_ONE_LINE_H_
#define HOST_BASE_ONE_LINE_H_

#include <cstddef>
#include <string>
#include <string_view>

namespace ipvald {

/// `text` as one line: every run of blanks and of characters that steer a terminal becomes one
/// blank, none at either end, and what is longer than 500 bytes is cut (not inside a UTF-8
/// character) and ends with "...".
std::string OneLine(std::string_view text);

/// At most `max` bytes of `text`, not cut inside a UTF-8 character, with "..." behind when that is
/// not all.
std::string Cut(std::string_view text, size_t max);

}  // namespace ipvald

#endif  // HOST_BASE_ONE_LINE_H_
