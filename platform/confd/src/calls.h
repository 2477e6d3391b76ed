// Counting and watching of calls; every function of the library announces itself here first.
#ifndef PLATFORM_CONFD_CALLS_H_
#define PLATFORM_CONFD_CALLS_H_

#include <string_view>

namespace confd {

/// Announces a call. @returns false when the watcher wants it to fail; the error is set then.
bool BeginCall(const char* function, std::string_view path);

/// Announces a release, which is watched but not counted.
void NoteRelease(const char* function);

}  // namespace confd

#endif  // PLATFORM_CONFD_CALLS_H_
