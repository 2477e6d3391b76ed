// Want of memory, which libyang reports as any other failure.
#ifndef PLATFORM_STORE_OUT_OF_MEMORY_H_
#define PLATFORM_STORE_OUT_OF_MEMORY_H_

#include <libyang/log.h>

#include <new>

namespace store {

/// For a result of libyang that is no success: when it says that memory was lacking, no folder and
/// no configuration is to blame.
/// @throws std::bad_alloc
inline void ThrowIfOutOfMemory(LY_ERR result) {
  if (result == LY_EMEM) throw std::bad_alloc();
}

}  // namespace store

#endif  // PLATFORM_STORE_OUT_OF_MEMORY_H_
