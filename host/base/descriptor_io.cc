#include "descriptor_io.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>

namespace ipvald {
namespace {

// Whether a call that failed just now is worth another one.
bool WaitFor(int fd, short events) {
  if (errno == EINTR) return true;
  if (errno != EAGAIN) return false;
  pollfd watched{fd, events, 0};
  return poll(&watched, 1, -1) >= 0 || errno == EINTR;
}

}  // namespace

ssize_t ReadBlocking(int fd, void* buffer, size_t size) {
  for (;;) {
    const ssize_t got = read(fd, buffer, size);
    if (got >= 0 || !WaitFor(fd, POLLIN)) return got;
  }
}

ssize_t WriteBlocking(int fd, const void* buffer, size_t size) {
  for (;;) {
    const ssize_t written = write(fd, buffer, size);
    if (written == 0 && size > 0) {
      errno = EIO;
      return -1;
    }
    if (written >= 0 || !WaitFor(fd, POLLOUT)) return written;
  }
}

}  // namespace ipvald
