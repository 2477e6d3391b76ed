// Reading and writing descriptors that may be set not to block.
#ifndef HOST_BASE_DESCRIPTOR_IO_H_
#define HOST_BASE_DESCRIPTOR_IO_H_

#include <sys/types.h>

#include <cstddef>

namespace ipvald {

/// read(2) and write(2), but they wait where the descriptor would not, and go on after a signal.
/// Whether standard input and output block is up to whoever shares them with this program. To have
/// written nothing of something is an error, EIO: who calls again would do so for ever.
ssize_t ReadBlocking(int fd, void* buffer, size_t size);
ssize_t WriteBlocking(int fd, const void* buffer, size_t size);

}  // namespace ipvald

#endif  // HOST_BASE_DESCRIPTOR_IO_H_
