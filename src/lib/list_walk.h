// A walk over the entries of a list.
#ifndef SRC_LIB_LIST_WALK_H_
#define SRC_LIB_LIST_WALK_H_

#include <string>

#include "confd_maapi.h"

namespace ip_application::config_valid {

/// Steps through the entries of one list with a MAAPI cursor, which is destroyed on every way out:
///
///   for (ListWalk walk(sock, thandle, "/internal/ospf-interface-l3"); walk.Next();) {
///     Use(walk.keys()[0]);
///   }
///
/// Deliberate: no result of the cursor calls is looked at; a cursor that failed has no entry.
class ListWalk {
 public:
  /// @param list_path  absolute keypath text without keys behind the list
  ListWalk(int sock, int thandle, const std::string& list_path) {
    maapi_init_cursor(sock, thandle, &cursor_, "%s", list_path.c_str());
  }
  ~ListWalk() { maapi_destroy_cursor(&cursor_); }
  ListWalk(const ListWalk&) = delete;
  ListWalk& operator=(const ListWalk&) = delete;

  /// Goes to the next entry, at first to the first one; false when there is none.
  [[nodiscard]] bool Next() {
    maapi_get_next(&cursor_);
    return cursor_.n != 0;
  }

  /// Of the entry at which the walk is; they live until the next step.
  const confd_value_t* keys() const { return cursor_.keys; }

 private:
  maapi_cursor cursor_{};
};

}  // namespace ip_application::config_valid

#endif  // SRC_LIB_LIST_WALK_H_
