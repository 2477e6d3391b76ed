// Counting and watching of calls; every function of the library announces itself here first.
#ifndef PLATFORM_CONFD_CALLS_H_
#define PLATFORM_CONFD_CALLS_H_

#include <cstddef>
#include <optional>
#include <string_view>

namespace confd {

/// Announces a call. @returns false when the watcher wants it to fail; the error is set then.
bool BeginCall(const char* function, std::string_view path);

/// Position of the value that the watcher wants to be of another type in the call that began last;
/// nothing when it wants none. A call that makes others begin has to ask before.
std::optional<size_t> WrongValue();

/// Announces a release, which is watched but not counted.
void NoteRelease(const char* function);

}  // namespace confd

#endif  // PLATFORM_CONFD_CALLS_H_
