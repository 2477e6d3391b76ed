// Configuration files as `ipvald check` reads them, and the calls that they lead to.
#include <memory>
#include <string>
#include <vector>

#include "configuration_file.h"
#include "require.h"
#include "support/data_model.h"
#include "triggers.h"

namespace {

using fuzz::Require;
using SnapshotPtr = std::shared_ptr<const store::Snapshot>;

// Nothing when the text is refused; then with one line that begins with the name of the file.
SnapshotPtr Parse(const std::string& text) {
  try {
    SnapshotPtr snapshot = ipvald::ParseConfiguration(tests::DataModel(), "input", text).snapshot;
    Require(snapshot != nullptr, "an accepted text gives a configuration");
    return snapshot;
  } catch (const ipvald::InputError& error) {
    const std::string message = error.what();
    Require(message.starts_with("input:"), "the message names the file: " + message);
    Require(message.find_first_of("\r\n") == message.npos, "one line: " + message);
    return nullptr;
  }
}

void CheckCalls(const store::Snapshot& running, const store::Snapshot& candidate) {
  int priority = 0;
  for (const ipvald::TriggeredCall& call : ipvald::FindTriggeredCalls(running, candidate)) {
    Require(call.instance == nullptr || call.list_parent == nullptr, "an entry or a whole list");
    Require(call.point->priority >= priority, "calls are in the order of their priorities");
    priority = call.point->priority;
    const std::string path = KeypathOf(*tests::DataModel(), call).text();
    Require(path.starts_with("/"), "a call has a path: " + path);
    const std::string reason = ipvald::ReasonOf(*tests::DataModel(), call);
    Require(call.cause.has_value() && reason.find(" /") != reason.npos,
            "every point has dependencies, so every call has a change: " + reason);
  }
}

// JSON that ends too early is never a configuration. XML may be, between two top-level elements.
void CheckThatNothingCanBeMissing(const std::string& text) {
  const size_t last = text.find_last_not_of(" \t\r\n");
  if (text[last] != '}') return;
  Require(Parse(text.substr(0, last)) == nullptr, "without its last brace a text is refused");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size > 16384) return 0;  // more of the same only takes time
  const SnapshotPtr configuration = Parse({reinterpret_cast<const char*>(data), size});
  if (configuration == nullptr) return 0;
  CheckThatNothingCanBeMissing({reinterpret_cast<const char*>(data), size});

  static const SnapshotPtr empty = store::Snapshot::Empty(tests::DataModel());
  CheckCalls(*empty, *configuration);
  CheckCalls(*configuration, *empty);
  Require(ipvald::FindTriggeredCalls(*configuration, *configuration).empty(), "no change, no call");
  return 0;
}
