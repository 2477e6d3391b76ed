// The bytes of a configuration file and what can be told of them before they are parsed.
#ifndef HOST_INPUT_INPUT_TEXT_H_
#define HOST_INPUT_INPUT_TEXT_H_

#include <cstddef>
#include <string>
#include <string_view>

#include "input_error.h"

namespace ipvald {

enum class InputFormat { kXml, kJson };

/// What XML and JSON take for a blank.
inline constexpr std::string_view kBlanks = " \t\r\n";

/// Bytes of an unexpected text that a message shows.
inline constexpr size_t kShownLength = 20;

/// Larger files are refused; 256 MiB is some thousand times the largest configuration that a device
/// takes.
inline constexpr size_t kMaxConfigurationSize = size_t{256} << 20;

/// The text of a configuration file and what messages call the file.
struct SourceText {
  std::string name;
  std::string text;

  /// Number of the line with the byte at `offset`, from 1.
  size_t LineAt(size_t offset) const;

  /// "NAME:LINE: message" for the byte at `offset`.
  InputError ErrorAt(size_t offset, std::string_view message) const;
};

/// All bytes of `file`, "-" for standard input. A big file that is neither XML nor JSON is given up
/// after a few kilobytes.
/// @throws InputError  missing, a directory, unreadable, larger than `max_size` bytes, or as
/// SniffFormat
std::string ReadInputText(const std::string& file, size_t max_size);

/// XML begins with '<' and JSON with '{', after an optional byte order mark and blanks.
/// @throws InputError  anything else, or nothing but blanks
InputFormat SniffFormat(const std::string& name, std::string_view text);

/// Removes a UTF-8 byte order mark from the beginning of `text`.
void RemoveByteOrderMark(std::string& text);

/// @throws InputError  `text` is not UTF-8 (RFC 3629), or holds a NUL byte, U+FFFE or U+FFFF, with
/// the line where that is
void CheckUtf8(const std::string& name, std::string_view text);

}  // namespace ipvald

#endif  // HOST_INPUT_INPUT_TEXT_H_
