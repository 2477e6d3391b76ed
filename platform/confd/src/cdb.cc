#include "confd_cdb.h"

#include <string>

#include "calls.h"
#include "database.h"
#include "errors.h"
#include "path.h"
#include "read.h"

namespace confd {
namespace {

// Formats the path, announces the call and finds the session's configuration, in this order.
struct SessionCall {
  SessionCall(const char* function, int sock, const char* format, va_list args) {
    SearchedSnapshot* session = FindCdbSession(sock);
    const FormattedPath path(format, args);
    if (!BeginCall(function, path.view()) || session == nullptr || !path.is_valid()) return;
    place = FindPlace(*session, path.view());
    configuration = session->snapshot.get();
  }

  const store::Snapshot* configuration = nullptr;
  std::optional<store::Place> place;
};

int StartSession(const char* function, int sock, cdb_db_type db) {
  if (!BeginCall(function, "")) return CONFD_ERR;
  if (db != CDB_RUNNING) {
    return Fail(CONFD_ERR_NOT_IMPLEMENTED, "only the running configuration can be read");
  }
  return OpenCdbSession(sock);
}

}  // namespace
}  // namespace confd

int cdb_start_session(int sock, enum cdb_db_type db) {
  return confd::StartSession("cdb_start_session", sock, db);
}

int cdb_start_session2(int sock, enum cdb_db_type db, int /*flags*/) {
  return confd::StartSession("cdb_start_session2", sock, db);
}

int cdb_end_session(int sock) {
  if (!confd::BeginCall("cdb_end_session", "")) return CONFD_ERR;
  return confd::EndCdbSession(sock);
}

int cdb_exists(int sock, const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  const confd::SessionCall call("cdb_exists", sock, fmt, args);
  va_end(args);
  return call.place ? confd::ReadExists(*call.place) : CONFD_ERR;
}

int cdb_num_instances(int sock, const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  const confd::SessionCall call("cdb_num_instances", sock, fmt, args);
  va_end(args);
  return call.place ? confd::ReadInstanceCount(*call.configuration, *call.place) : CONFD_ERR;
}

int cdb_get(int sock, confd_value_t* v, const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  const confd::SessionCall call("cdb_get", sock, fmt, args);
  va_end(args);
  return call.place ? confd::GiveValue(*call.place, v) : CONFD_ERR;
}

int cdb_get_int32(int sock, int32_t* rval, const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  const confd::SessionCall call("cdb_get_int32", sock, fmt, args);
  va_end(args);
  if (!call.place) return CONFD_ERR;
  return confd::ReadTyped(*call.place, C_INT32,
                          [rval](const confd_value_t& value) { *rval = value.val.i32; });
}
