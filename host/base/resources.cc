#include "resources.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace ipvald {
namespace {

constexpr size_t kDescriptors = 16;  // a module that imports holds one open while it is read

rlim_t Limit(int resource) {
  rlimit limit{};
  return getrlimit(static_cast<__rlimit_resource_t>(resource), &limit) == 0 ? limit.rlim_cur
                                                                            : RLIM_INFINITY;
}

ResourceError NoDescriptor(int error) {
  if (error != EMFILE) return ResourceError(std::strerror(error));
  return ResourceError("too few file descriptors: " + std::to_string(DescriptorLimit()) +
                       " allowed (ulimit -n)");
}

}  // namespace

uint64_t DescriptorLimit() { return Limit(RLIMIT_NOFILE); }

bool IsMemoryLimited() {
  return Limit(RLIMIT_AS) != RLIM_INFINITY || Limit(RLIMIT_DATA) != RLIM_INFINITY;
}

bool HasMemory(size_t size) {
  if (!IsMemoryLimited()) return true;
  // volatile: the compiler may leave out an allocation that is only looked at.
  void* volatile memory = std::malloc(size);
  const bool has_memory = memory != nullptr;
  std::free(memory);
  return has_memory;
}

void RequireDescriptors() {
  std::vector<int> opened;
  int error = 0;
  while (opened.size() < kDescriptors && error == 0) {
    const int fd = open("/", O_PATH | O_CLOEXEC);
    if (fd < 0) {
      error = errno;
    } else {
      opened.push_back(fd);
    }
  }
  for (const int fd : opened) close(fd);
  if (error != 0) throw NoDescriptor(error);
}

}  // namespace ipvald
