#include "calls.h"

#include <functional>
#include <optional>
#include <string>
#include <utility>

#include "confd/call_count.h"
#include "confd/watch_calls.h"
#include "confd_lib.h"
#include "errors.h"

namespace confd {
namespace {

uint64_t call_count = 0;

// Of the call that began last.
std::optional<size_t> wrong_value;

std::function<CallRequest(const Call&)>& Watcher() {
  static std::function<CallRequest(const Call&)> watcher;
  return watcher;
}

CallRequest Announce(const char* function, std::string_view path) {
  if (!Watcher()) return CallAction::kProceed;
  return Watcher()(Call{function, std::string(path)});
}

}  // namespace

void WatchCalls(std::function<CallRequest(const Call&)> watcher) { Watcher() = std::move(watcher); }

uint64_t CallCount() { return call_count; }

bool BeginCall(const char* function, std::string_view path) {
  ++call_count;
  const CallRequest request = Announce(function, path);
  wrong_value.reset();
  if (request.action == CallAction::kWrongType) wrong_value = request.position;
  if (request.action != CallAction::kFail) return true;
  Fail(CONFD_ERR_INTERNAL, std::string(function) + " made to fail");
  return false;
}

std::optional<size_t> WrongValue() { return wrong_value; }

void NoteRelease(const char* function) { Announce(function, ""); }

}  // namespace confd
