// What libyang found wrong with a text, taken apart: the one place that knows how it words a place.
#ifndef STORE_LIBYANG_FAULT_H_
#define STORE_LIBYANG_FAULT_H_

#include <cstdint>
#include <string_view>

struct ly_ctx;

namespace store {

/// One fault, as views of libyang's own texts: they live until it is called again with the context.
struct LibyangFault {
  std::string_view message;   // may quote the whole text; empty when there is none
  std::string_view location;  // in libyang's words, such as `Data location "/a:b", line number 7.`
  std::string_view path;      // data path in the location, or empty
  uint64_t line = 0;          // line in the location, 0 when it has none
};

/// The fault that libyang reported last.
/// @throws std::bad_alloc  it was a lack of memory
LibyangFault LastFault(const ly_ctx* context);

}  // namespace store

#endif  // STORE_LIBYANG_FAULT_H_
