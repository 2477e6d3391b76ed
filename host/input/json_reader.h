// A strict reader of JSON (RFC 8259), which libyang's is not: every text that it lets through is
// well-formed to the last byte. A reader of our own, since those of the libraries tell no positions
// and take as long as a tenth of all that is done with a file.
#ifndef HOST_INPUT_JSON_READER_H_
#define HOST_INPUT_JSON_READER_H_

#include <cstddef>
#include <string_view>

#include "input_text.h"
#include "text_edits.h"

namespace ipvald {

enum class JsonKind { kString, kNumber, kTrue, kFalse, kNull };

/// What a text holds, in the order of the text. Offsets are those of the first byte. Views live for
/// the time of the call.
class JsonHandler {
 public:
  virtual ~JsonHandler() = default;
  virtual void BeginObject(size_t offset) = 0;
  virtual void EndObject(size_t offset) = 0;
  virtual void BeginArray(size_t offset) = 0;
  virtual void EndArray(size_t offset) = 0;
  virtual void Member(std::string_view name, size_t offset) = 0;
  /// @param text  a string without quotes and escapes, anything else as it is written
  virtual void Scalar(JsonKind kind, std::string_view text, size_t offset) = 0;
};

/// Objects and arrays may stand in each other up to this depth.
inline constexpr size_t kMaxJsonDepth = 200;

/// Reads `source`, whose text is UTF-8, and tells `handler` what it holds. What the handler throws
/// passes through. Escaped surrogate pairs, which libyang does not take, are replaced in `edits` by
/// the character that they stand for.
/// @throws InputError  the text is no JSON value, or goes on behind it
void ReadJson(const SourceText& source, JsonHandler& handler, TextEdits& edits);

}  // namespace ipvald

#endif  // HOST_INPUT_JSON_READER_H_
