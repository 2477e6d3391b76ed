// What the child process tells its parent: a stream of records, each one of the structs below.
#ifndef HOST_PLUGIN_RECORDS_H_
#define HOST_PLUGIN_RECORDS_H_

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "framework/host.h"

namespace ipvald {

/// The child is about to enter the plug-in outside a call, for example in "lib_init".
struct StageRecord {
  std::string stage;
};

/// The call with that index is about to be made.
struct BeginRecord {
  uint32_t call = 0;
};

/// The call came back.
struct EndRecord {
  uint32_t call = 0;
  int32_t result = 0;
  std::optional<std::string> text;  // what the plug-in gave confd_trans_seterr
  uint64_t microseconds = 0;
  uint64_t datastore_calls = 0;
  std::vector<std::string> log;
  std::vector<framework::Fault> faults;
};

/// The file is no plug-in; nothing was called.
struct UnusableRecord {
  std::string reason;
};

/// The plug-in failed in a way that the child could see, for example with an exception.
struct FailedRecord {
  std::string reason;
};

/// All calls are made, or one was refused, and the plug-in is unloaded. Nothing comes after it.
struct DoneRecord {
  uint32_t open_cursors = 0;  // walks that the plug-in began and did not end
};

using Record =
    std::variant<StageRecord, BeginRecord, EndRecord, UnusableRecord, FailedRecord, DoneRecord>;

/// Bytes of a record: its length, its kind, its fields in the order above.
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

#endif  // HOST_PLUGIN_RECORDS_H_
