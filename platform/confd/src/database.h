// Sockets and transactions of the process by their handles.
#ifndef PLATFORM_CONFD_DATABASE_H_
#define PLATFORM_CONFD_DATABASE_H_

#include <set>

#include "path.h"

namespace confd {

/// A walk that maapi_init_cursor began and maapi_destroy_cursor has not yet ended.
struct CursorWalk;

struct Transaction {
  int database;
  SearchedSnapshot running;
  SearchedSnapshot candidate;
  std::set<CursorWalk*> walks;
};

/// The transaction behind the handle, if it is attached to the socket.
/// @returns null otherwise, with CONFD_ERR_NOSESSION or CONFD_ERR_NOTRANS set.
Transaction* FindTransaction(int sock, int thandle);

/// The configuration that a CDB session on the socket reads.
/// @returns null when no session is open, with CONFD_ERR_NOSESSION set.
SearchedSnapshot* FindCdbSession(int sock);

/// Opens or ends the CDB session of a socket. @returns CONFD_OK, or CONFD_ERR with the error set.
int OpenCdbSession(int sock);
int EndCdbSession(int sock);

}  // namespace confd

#endif  // PLATFORM_CONFD_DATABASE_H_
