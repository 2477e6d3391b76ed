#include "plugin_protocol.h"

#include <utility>
#include <variant>

#include "confd_lib.h"
#include "one_line.h"

namespace ipvald {
namespace {

std::string Describe(const StageRecord& record) { return "stage " + OneLine(record.stage); }
std::string Describe(const BeginRecord& record) {
  return "begin of call " + std::to_string(record.call);
}
std::string Describe(const EndRecord& record) {
  return "end of call " + std::to_string(record.call);
}
std::string Describe(const UnusableRecord& /*record*/) { return "plug-in unusable"; }
std::string Describe(const FailedRecord& /*record*/) { return "failure"; }
std::string Describe(const DoneRecord& /*record*/) { return "done"; }

bool IsAccepted(const EndRecord& record) {
  return record.result == CONFD_OK || record.result == CONFD_VALIDATION_WARN;
}

}  // namespace

void PluginProtocol::Take(Record record) {
  if (!run_.failure.empty()) return;
  std::visit(
      [this](auto& alternative) {
        if (Follow(alternative)) return;
        run_.failure = "impossible result: " + Describe(alternative) + " " + DescribeState();
      },
      record);
}

bool PluginProtocol::Follow(StageRecord& record) {
  struct Step {
    const char* stage;
    State from;
    State to;
  };
  const Step steps[] = {{"loading", State::kStart, State::kLoading},
                        {"get_validation_point", State::kLoading, State::kNaming},
                        {"lib_init", State::kNaming, AfterCalls(0)},
                        {"lib_finish", State::kAnswered, State::kFinishing},
                        {"unloading", State::kFinishing, State::kUnloading}};
  for (const Step& step : steps) {
    if (step.from != state_ || record.stage != step.stage) continue;
    state_ = step.to;
    run_.stage = std::move(record.stage);
    return true;
  }
  return false;
}

PluginProtocol::State PluginProtocol::AfterCalls(uint32_t made) const {
  return made == calls_ ? State::kAnswered : State::kBeforeCall;
}

bool PluginProtocol::Follow(BeginRecord& record) {
  if (state_ != State::kBeforeCall || record.call != run_.ended.size()) return false;
  state_ = State::kInCall;
  run_.in_call = record.call;
  run_.stage.clear();
  return true;
}

bool PluginProtocol::Follow(EndRecord& record) {
  if (state_ != State::kInCall || run_.in_call != record.call) return false;
  state_ = IsAccepted(record) ? AfterCalls(record.call + 1) : State::kAnswered;
  run_.in_call.reset();
  run_.ended.push_back(std::move(record));
  return true;
}

bool PluginProtocol::Follow(UnusableRecord& record) {
  if (state_ != State::kLoading) return false;
  state_ = State::kOver;
  unusable_ = std::move(record.reason);
  return true;
}

// Also between two calls: memory can run out there.
bool PluginProtocol::Follow(FailedRecord& record) {
  if (state_ == State::kStart || state_ == State::kOver) return false;
  state_ = State::kOver;
  run_.failure = OneLine(record.reason);
  return true;
}

bool PluginProtocol::Follow(DoneRecord& record) {
  if (state_ != State::kUnloading) return false;
  state_ = State::kOver;
  run_.open_cursors = record.open_cursors;
  is_done_ = true;
  return true;
}

std::string PluginProtocol::DescribeState() const {
  switch (state_) {
    case State::kStart:
      return "before the first stage";
    case State::kLoading:
    case State::kNaming:
    case State::kFinishing:
    case State::kUnloading:
      return "in stage " + run_.stage;
    case State::kInCall:
      return "in call " + std::to_string(*run_.in_call);
    case State::kBeforeCall:
      return "before call " + std::to_string(run_.ended.size());
    case State::kAnswered:
      return "behind the last call";
    case State::kOver:
      break;
  }
  return "behind the end";
}

}  // namespace ipvald
