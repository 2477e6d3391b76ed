// Records as the bytes that go through the pipe from the child to its parent.
#ifndef HOST_SANDBOX_RECORD_STREAM_H_
#define HOST_SANDBOX_RECORD_STREAM_H_

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "plugin_records.h"

namespace ipvald {

/// Bytes of a record: its length, its kind, its fields in the order of its struct.
std::string Encode(const Record& record);

/// Puts records together again from bytes that arrive in pieces of any size.
///
/// Whoever writes the bytes decides neither how much memory they take nor what is read from it: one
/// record has at most 64 MiB, and all of them together, as structs, take at most 128 MiB.
class RecordReader {
 public:
  void Append(std::string_view bytes);

  /// The next complete record, or none yet.
  /// @throws std::runtime_error  the bytes are no record, or the records are too large
  std::optional<Record> Next();

  /// Whether there are bytes of a record that is not complete.
  bool has_rest() const { return read_ != buffer_.size(); }

 private:
  std::string buffer_;
  size_t read_ = 0;
  size_t room_ = size_t{128} << 20;  // bytes that further records may take
};

}  // namespace ipvald

#endif  // HOST_SANDBOX_RECORD_STREAM_H_
