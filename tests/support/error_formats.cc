#include "support/error_formats.h"

#include <dlfcn.h>

#include <cstdarg>
#include <cstdio>

#include "confd_dp.h"

namespace tests {

std::vector<std::string> error_formats;

}  // namespace tests

void confd_trans_seterr(confd_trans_ctx* tctx, const char* fmt, ...) {
  tests::error_formats.emplace_back(fmt);
  va_list args;
  va_start(args, fmt);
  char text[1024];
  vsnprintf(text, sizeof(text), fmt, args);
  va_end(args);
  const auto original =
      reinterpret_cast<decltype(&confd_trans_seterr)>(dlsym(RTLD_NEXT, "confd_trans_seterr"));
  original(tctx, "%s", text);
}
