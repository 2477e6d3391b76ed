#include "program_text.h"

#include <link.h>

#include <cstdint>

namespace confd {
namespace {

// A callback of dl_iterate_phdr, which goes on as long as it returns 0.
int IsInReadOnlySegment(dl_phdr_info* object, size_t /*size*/, void* text) {
  const auto address = reinterpret_cast<uintptr_t>(text);
  for (int i = 0; i < object->dlpi_phnum; ++i) {
    const ElfW(Phdr)& segment = object->dlpi_phdr[i];
    if (segment.p_type != PT_LOAD || (segment.p_flags & PF_W) != 0) continue;
    const uintptr_t begin = object->dlpi_addr + segment.p_vaddr;
    if (address >= begin && address - begin < segment.p_memsz) return 1;
  }
  return 0;
}

}  // namespace

bool IsProgramText(const char* text) {
  return dl_iterate_phdr(IsInReadOnlySegment, const_cast<char*>(text)) != 0;
}

}  // namespace confd
