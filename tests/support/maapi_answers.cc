#include "support/maapi_answers.h"

#include <dlfcn.h>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>

#include "confd_maapi.h"

namespace tests {
namespace {

MaapiAnswers* in_force = nullptr;

std::string FormatPath(const char* fmt, va_list args) {
  char path[1024];
  const int length = vsnprintf(path, sizeof(path), fmt, args);
  if (length < 0 || static_cast<size_t>(length) >= sizeof(path)) abort();
  return path;
}

MaapiAnswer AnswerFor(const char* function, const char* fmt, const std::string& path) {
  if (in_force == nullptr) return {};
  in_force->formats.push_back(std::string(function) + " " + fmt);
  const auto answer = in_force->by_path.find(path);
  return answer == in_force->by_path.end() ? MaapiAnswer() : answer->second;
}

// The function of that name in libconfd.
template <typename Function>
Function* Original(const char* name, Function* /*type*/) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

// One read: what is answered here, else what libconfd answers.
template <typename Function, typename Out, typename Store>
int Read(const char* name, Function* type, int sock, int thandle, Out* out, const char* fmt,
         va_list args, Store store) {
  const std::string path = FormatPath(fmt, args);
  const MaapiAnswer answer = AnswerFor(name, fmt, path);
  if (answer.value) store(*answer.value);
  if (answer.read) return *answer.read;
  return Original(name, type)(sock, thandle, out, "%s", path.c_str());
}

}  // namespace

MaapiAnswers::MaapiAnswers() { in_force = this; }
MaapiAnswers::~MaapiAnswers() { in_force = nullptr; }

}  // namespace tests

int maapi_exists(int sock, int thandle, const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  const std::string path = tests::FormatPath(fmt, args);
  va_end(args);
  const tests::MaapiAnswer answer = tests::AnswerFor("maapi_exists", fmt, path);
  if (answer.exists) return *answer.exists;
  return tests::Original("maapi_exists", maapi_exists)(sock, thandle, "%s", path.c_str());
}

int maapi_init_cursor(int sock, int thandle, maapi_cursor* mc, const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  const std::string path = tests::FormatPath(fmt, args);
  va_end(args);
  tests::AnswerFor("maapi_init_cursor", fmt, path);
  return tests::Original("maapi_init_cursor", maapi_init_cursor)(sock, thandle, mc, "%s",
                                                                 path.c_str());
}

int maapi_get_elem(int sock, int thandle, confd_value_t* v, const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  const int result =
      tests::Read("maapi_get_elem", maapi_get_elem, sock, thandle, v, fmt, args,
                  [v](const confd_value_t& value) { confd_value_dup_to(&value, v); });
  va_end(args);
  return result;
}

int maapi_get_ipv4_and_plen_elem(int sock, int thandle, confd_ipv4_prefix* rval, const char* fmt,
                                 ...) {
  va_list args;
  va_start(args, fmt);
  const int result =
      tests::Read("maapi_get_ipv4_and_plen_elem", maapi_get_ipv4_and_plen_elem, sock, thandle, rval,
                  fmt, args, [rval](const confd_value_t& value) { *rval = value.val.ipv4prefix; });
  va_end(args);
  return result;
}

int maapi_get_ipv6_and_plen_elem(int sock, int thandle, confd_ipv6_prefix* rval, const char* fmt,
                                 ...) {
  va_list args;
  va_start(args, fmt);
  const int result =
      tests::Read("maapi_get_ipv6_and_plen_elem", maapi_get_ipv6_and_plen_elem, sock, thandle, rval,
                  fmt, args, [rval](const confd_value_t& value) { *rval = value.val.ipv6prefix; });
  va_end(args);
  return result;
}
