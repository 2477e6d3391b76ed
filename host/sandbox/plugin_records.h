// What the child process tells its parent: a stream of records, each one of the structs below.
#ifndef HOST_SANDBOX_PLUGIN_RECORDS_H_
#define HOST_SANDBOX_PLUGIN_RECORDS_H_

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace ipvald {

/// The child is about to enter the plug-in outside a call, for example in "lib_init".
struct StageRecord {
  std::string stage;
};

/// The call with that index is about to be made.
struct BeginRecord {
  uint32_t call = 0;
};

/// A fault that the plug-in reported in a call, as it gave it.
struct FaultRecord {
  int level = 0;
  std::string function;
  std::string file;
  int line = 0;
  std::string message;

  friend bool operator==(const FaultRecord&, const FaultRecord&) = default;
};

/// The call came back.
struct EndRecord {
  uint32_t call = 0;
  int32_t result = 0;
  std::optional<std::string> text;  // what the plug-in gave confd_trans_seterr
  uint64_t microseconds = 0;
  uint64_t datastore_calls = 0;
  std::vector<std::string> log;
  std::vector<FaultRecord> faults;
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

}  // namespace ipvald

#endif  // HOST_SANDBOX_PLUGIN_RECORDS_H_
