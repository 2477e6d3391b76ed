// Reads at a place of a configuration; MAAPI and CDB answer alike.
#ifndef PLATFORM_CONFD_READ_H_
#define PLATFORM_CONFD_READ_H_

#include "calls.h"
#include "path.h"
#include "value.h"

namespace confd {

int ReadExists(const store::Place& place);
int ReadInstanceCount(const store::Snapshot& configuration, const store::Place& place);

/// The leaf's value, owned by the caller.
int ReadValue(const store::Place& place, confd_value_t* value);

/// The same for the plug-in: of another type when the watcher of calls wants that.
int GiveValue(const store::Place& place, confd_value_t* value);

/// Reads a leaf that must have ConfD type `type` and gives the value, which stays owned here, to
/// `take`.
template <typename Take>
int ReadTyped(const store::Place& place, confd_vtype type, Take take);

int WrongType(const store::Place& place);

template <typename Take>
int ReadTyped(const store::Place& place, confd_vtype type, Take take) {
  confd_value_t value;
  if (ReadValue(place, &value) != CONFD_OK) return CONFD_ERR;
  const bool fits = value.type == type && !WrongValue();
  if (fits) take(value);
  FreeOwned(&value);
  return fits ? CONFD_OK : WrongType(place);
}

}  // namespace confd

#endif  // PLATFORM_CONFD_READ_H_
