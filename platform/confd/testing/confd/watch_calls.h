// For tests: watching the calls of a plug-in, and disturbing them.
#ifndef CONFD_WATCH_CALLS_H_
#define CONFD_WATCH_CALLS_H_

#include <cstddef>
#include <functional>
#include <string>

namespace confd {

/// One call of a maapi_, cdb_ or confd_free_value function. `path` is the formatted path text,
/// empty where there is none.
struct Call {
  const char* function;
  std::string path;
};

/// What the call shall do.
///
/// kFail: return CONFD_ERR with CONFD_ERR_INTERNAL. A step of a cursor then holds no entry;
/// functions without a result proceed.
///
/// kWrongType: find a value of another type than the data model promises, an int32 where there is a
/// text and a text where there is anything else.
///   maapi_get_elem, cdb_get           give that value
///   typed reads (maapi_get_int8_elem  fail with CONFD_ERR_BADTYPE and leave their output alone, as
///   to cdb_get_int32)                 when the data model has another type
///   maapi_get_next                    gives an entry with one key of another type
///   maapi_diff_iterate,               report every change with one value of another type
///   maapi_keypath_diff_iterate
///   all others                        proceed
enum class CallAction { kProceed, kFail, kWrongType };

/// What a watcher wants of a call.
struct CallRequest {
  /// Implicit, so that a watcher may return the action alone.
  CallRequest(CallAction wanted, size_t which = 0) : action(wanted), position(which) {}

  CallAction action;
  /// Of the value that kWrongType changes, where there are several: of a key among the keys; in a
  /// report of a change 0 for the new value, i + 1 for the first value of element i of the keypath.
  /// Values that are not there stay so.
  size_t position;
};

/// Sees every call before it is carried out, and says what it shall do. An empty function switches
/// the watching off.
void WatchCalls(std::function<CallRequest(const Call&)> watcher);

}  // namespace confd

#endif  // CONFD_WATCH_CALLS_H_
