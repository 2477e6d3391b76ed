#include "store/libyang_fault.h"

#include <libyang/libyang.h>

#include <charconv>
#include <new>

namespace store {
namespace {

uint64_t LineOf(std::string_view location) {
  constexpr std::string_view kMarker = "ine number ";  // "Line number" when it stands alone
  uint64_t line = 0;
  if (const size_t marker = location.rfind(kMarker); marker != location.npos) {
    std::from_chars(location.data() + marker + kMarker.size(), location.data() + location.size(),
                    line);
  }
  return line;
}

std::string_view PathOf(std::string_view location) {
  const size_t first = location.find('"');
  const size_t last = location.rfind('"');
  if (first == last) return "";
  return location.substr(first + 1, last - first - 1);
}

std::string_view ViewOf(const char* text) { return text != nullptr ? text : ""; }

}  // namespace

LibyangFault LastFault(const ly_ctx* context) {
  if (ly_errcode(context) == LY_EMEM) throw std::bad_alloc();
  LibyangFault fault;
  fault.message = ViewOf(ly_errmsg(context));
  fault.location = ViewOf(ly_errpath(context));
  fault.path = PathOf(fault.location);
  fault.line = LineOf(fault.location);
  return fault;
}

}  // namespace store
