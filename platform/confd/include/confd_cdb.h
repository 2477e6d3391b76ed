// Reads of the committed configuration, as confd_lib_cdb(3) describes them. Paths and errors as in
// confd_maapi.h; CONFD_ERR_NOSESSION when no session is open on the socket.
#ifndef CONFD_CDB_H
#define CONFD_CDB_H

#include "confd_lib.h"

#ifdef __cplusplus
extern "C" {
#endif

enum cdb_db_type {
  CDB_RUNNING = 1,
  CDB_STARTUP = 2,
  CDB_OPERATIONAL = 3,
  CDB_PRE_COMMIT_RUNNING = 4
};

#define CDB_LOCK_WAIT 1
#define CDB_LOCK_SESSION 2
#define CDB_LOCK_REQUEST 4
#define CDB_LOCK_PARTIAL 8
#define CDB_READ_COMMITTED 16

/// Opens a session with a read lock, or with the given lock flags (0: none). Only CDB_RUNNING is
/// kept here.
int cdb_start_session(int sock, enum cdb_db_type db);
int cdb_start_session2(int sock, enum cdb_db_type db, int flags);
int cdb_end_session(int sock);

int cdb_exists(int sock, const char* fmt, ...);
int cdb_num_instances(int sock, const char* fmt, ...);
int cdb_get(int sock, confd_value_t* v, const char* fmt, ...);
int cdb_get_int32(int sock, int32_t* rval, const char* fmt, ...);

#ifdef __cplusplus
}
#endif

#endif  // CONFD_CDB_H
