// The private part of a struct maapi_cursor.
#ifndef PLATFORM_CONFD_CURSOR_H_
#define PLATFORM_CONFD_CURSOR_H_

#include <cstddef>

#include "database.h"
#include "store/list_index.h"

namespace confd {

struct CursorWalk {
  Transaction* transaction;  // null once the transaction has ended
  const store::ListIndex* list;
  size_t next = 0;  // position of the entry that the next step shows
};

}  // namespace confd

#endif  // PLATFORM_CONFD_CURSOR_H_
