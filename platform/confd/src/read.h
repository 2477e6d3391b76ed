// Reads at a place of a configuration; MAAPI and CDB answer alike.
#ifndef PLATFORM_CONFD_READ_H_
#define PLATFORM_CONFD_READ_H_

#include "calls.h"
#include "path.h"
#include "value.h"

namespace confd {

int ReadExists(const Place& place);
int ReadInstanceCount(const Snapshot& configuration, const Place& place);

/// The leaf's value, owned by the caller.
int ReadValue(const Place& place, confd_value_t* value);

/// The same for the plug-in: of another type when the watcher of calls wants that.
int GiveValue(const Place& place, confd_value_t* value);

/// Reads a leaf that must have ConfD type `type` and gives the value, which stays owned here, to
/// `store`.
template <typename Store>
int ReadTyped(const Place& place, confd_vtype type, Store store);

int WrongType(const Place& place);

template <typename Store>
int ReadTyped(const Place& place, confd_vtype type, Store store) {
  confd_value_t value;
  if (ReadValue(place, &value) != CONFD_OK) return CONFD_ERR;
  const bool fits = value.type == type && !WrongValue();
  if (fits) store(value);
  FreeOwned(&value);
  return fits ? CONFD_OK : WrongType(place);
}

}  // namespace confd

#endif  // PLATFORM_CONFD_READ_H_
