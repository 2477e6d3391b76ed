// What the calls of a plug-in add up to. A device offers nothing of it.
#ifndef CONFD_CALL_COUNT_H_
#define CONFD_CALL_COUNT_H_

#include <cstdint>

namespace confd {

/// Calls since the process began, not counting confd_free_value.
uint64_t CallCount();

/// Values with memory of their own that were handed to callers and not yet released.
int64_t OutstandingValues();

}  // namespace confd

#endif  // CONFD_CALL_COUNT_H_
