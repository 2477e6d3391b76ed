#include "calls.h"

#include <string>
#include <utility>

#include "confd/store.h"
#include "errors.h"

namespace confd {
namespace {

uint64_t call_count = 0;

std::function<CallAction(const Call&)>& Watcher() {
  static std::function<CallAction(const Call&)> watcher;
  return watcher;
}

CallAction Announce(const char* function, std::string_view path) {
  if (!Watcher()) return CallAction::kProceed;
  return Watcher()(Call{function, std::string(path)});
}

}  // namespace

void WatchCalls(std::function<CallAction(const Call&)> watcher) { Watcher() = std::move(watcher); }

uint64_t CallCount() { return call_count; }

bool BeginCall(const char* function, std::string_view path) {
  ++call_count;
  if (Announce(function, path) == CallAction::kProceed) return true;
  Fail(CONFD_ERR_INTERNAL, std::string(function) + " made to fail");
  return false;
}

void NoteRelease(const char* function) { Announce(function, ""); }

}  // namespace confd
