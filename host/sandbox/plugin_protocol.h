// The order in which the child process reports what it does, checked record by record.
#ifndef HOST_SANDBOX_PLUGIN_PROTOCOL_H_
#define HOST_SANDBOX_PLUGIN_PROTOCOL_H_

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "plugin_records.h"

namespace ipvald {

/// What became of the calls of a PluginTask.
struct PluginRun {
  std::vector<EndRecord> ended;     // calls that came back, in the order of the task
  std::optional<uint32_t> in_call;  // call that was running when the plug-in failed
  std::string stage;                // otherwise the entry point it was in, for example "lib_init"
  std::string failure;              // why the plug-in failed, one line; empty when all went well
  std::string output;  // last 64 KiB of what it wrote to standard output and standard error
  uint32_t open_cursors = 0;
};

/// Follows the records of one child through the only order that there is:
///
///   stages "loading", "get_validation_point", "lib_init"
///   begin and end of each call in turn, up to the first that is refused
///   stages "lib_finish", "unloading"
///   done
///
/// A failure is possible in every stage and call, an unusable plug-in while it is loaded. Anything
/// else is a failure of the plug-in: it shares a process with who writes the records, and can write
/// some itself.
///
/// What cannot be told: a plug-in that writes a sequence that is possible, and ends the process
/// before the true one comes, is believed. It could as well have given those answers.
class PluginProtocol {
 public:
  /// @param calls  that the task has
  explicit PluginProtocol(uint32_t calls) : calls_(calls) {}

  /// Takes the next record. One that is not possible now becomes the failure of run(), which says
  /// what was impossible; after a failure nothing more is taken.
  void Take(Record record);

  /// Whether any record came; until then the plug-in was not touched.
  bool has_begun() const { return state_ != State::kStart || !run_.failure.empty(); }

  /// Whether everything was reported: all calls were answered, or one was refused, and nothing
  /// failed.
  bool is_done() const { return is_done_ && run_.failure.empty(); }

  /// Why the file is no plug-in, if it is none.
  const std::optional<std::string>& unusable() const { return unusable_; }

  /// What is known up to now, without the output.
  PluginRun& run() { return run_; }

 private:
  enum class State {
    kStart,
    kLoading,
    kNaming,
    kBeforeCall,  // in lib_init before the first one
    kInCall,
    kAnswered,  // all of them, or one was refused
    kFinishing,
    kUnloading,
    kOver,
  };

  // Each returns whether the record is possible, and only then takes it.
  bool Follow(StageRecord& record);
  bool Follow(BeginRecord& record);
  bool Follow(EndRecord& record);
  bool Follow(UnusableRecord& record);
  bool Follow(FailedRecord& record);
  bool Follow(DoneRecord& record);

  State AfterCalls(uint32_t made) const;
  std::string DescribeState() const;

  uint32_t calls_;
  State state_ = State::kStart;
  PluginRun run_;
  std::optional<std::string> unusable_;
  bool is_done_ = false;
};

}  // namespace ipvald

#endif  // HOST_SANDBOX_PLUGIN_PROTOCOL_H_
