#include "standard_output.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string>

#include "descriptor_io.h"

namespace ipvald {

void Print(std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = WriteBlocking(STDOUT_FILENO, text.data(), text.size());
    if (written < 0) throw OutputError(std::string("standard output: ") + std::strerror(errno));
    text.remove_prefix(static_cast<size_t>(written));
  }
}

}  // namespace ipvald
