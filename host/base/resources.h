// What a command needs of the machine, and the limits that the caller has set (ulimit).
#ifndef HOST_BASE_RESOURCES_H_
#define HOST_BASE_RESOURCES_H_

#include <cstddef>
#include <cstdint>
#include <stdexcept>

namespace ipvald {

/// The caller's limits leave too little for any command. what() is one line.
class ResourceError : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// Bytes for reading the data model and a small configuration.
inline constexpr size_t kMemoryOfCommand = size_t{40} << 20;

/// Numbers of descriptors are below this.
uint64_t DescriptorLimit();

/// Whether memory ends where the caller has set a limit.
bool IsMemoryLimited();

/// Whether that many bytes can be had under the limits. Without limits always true: what the
/// machine has is not looked at.
bool HasMemory(size_t size);

/// Makes sure that there are descriptors enough for a command. Without them whatever is opened
/// first would be blamed: a folder, a module, a file.
/// @throws ResourceError
void RequireDescriptors();

}  // namespace ipvald

#endif  // HOST_BASE_RESOURCES_H_
