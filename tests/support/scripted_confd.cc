#include "support/scripted_confd.h"

#include <dlfcn.h>

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <utility>

#include "confd_cdb.h"

namespace tests {
namespace {

ScriptedConfd* in_force = nullptr;

std::string Format(const char* fmt, va_list args) {
  va_list again;
  va_copy(again, args);
  std::string text(static_cast<size_t>(vsnprintf(nullptr, 0, fmt, args)) + 1, '\0');
  vsnprintf(text.data(), text.size(), fmt, again);
  va_end(again);
  text.pop_back();
  return text;
}

// The function of that name in libconfd.
template <typename Function>
Function* Original(const char* name, Function* /*type*/) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

// One call with a path: what was asked, and the answer to it.
struct Asked {
  Asked(const char* function, const std::string& sockets, const char* fmt, va_list args)
      : path(Format(fmt, args)) {
    if (in_force == nullptr) return;
    in_force->formats.push_back(std::string(function) + " " + fmt);
    in_force->Record(function, sockets + ", \"" + fmt + "\"");
    const auto& script =
        function == std::string_view("cdb_get_int32") ? in_force->committed : in_force->answers;
    if (const auto found = script.find(path); found != script.end()) answer = found->second;
    if (answer.value && !answer.read) answer.read = CONFD_OK;
    if (!in_force->fails()) return;
    if (!answer.exists) answer.exists = 0;
    if (!answer.read) answer.read = CONFD_ERR;
  }

  std::string path;
  Answer answer = {};
};

std::string Sockets(int sock, int thandle) {
  return std::to_string(sock) + ", " + std::to_string(thandle);
}

// One read: what is answered here, else what libconfd answers.
template <typename Function, typename Out, typename Store>
int Read(const char* name, Function* type, int sock, int thandle, Out* out, const char* fmt,
         va_list args, Store store) {
  const Asked asked(name, Sockets(sock, thandle), fmt, args);
  if (asked.answer.value) store(*asked.answer.value);
  if (asked.answer.read) return *asked.answer.read;
  return Original(name, type)(sock, thandle, out, "%s", asked.path.c_str());
}

}  // namespace

ScriptedConfd::ScriptedConfd(Unscripted unscripted) : unscripted_(unscripted) { in_force = this; }
ScriptedConfd::~ScriptedConfd() { in_force = nullptr; }

std::vector<std::string> ScriptedConfd::TakeCalls() { return std::exchange(calls_, {}); }

void ScriptedConfd::Record(const std::string& function, const std::string& arguments) {
  calls_.push_back(function + "(" + arguments + ")");
  if (on_call) on_call(function);
}

confd_value_t Int32(int32_t number) {
  confd_value_t value{};
  CONFD_SET_INT32(&value, number);
  return value;
}

confd_value_t Uint16(uint16_t number) {
  confd_value_t value{};
  CONFD_SET_UINT16(&value, number);
  return value;
}

confd_value_t Uint32(uint32_t number) {
  confd_value_t value{};
  CONFD_SET_UINT32(&value, number);
  return value;
}

}  // namespace tests

using tests::in_force;

int maapi_exists(int sock, int thandle, const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  const tests::Asked asked("maapi_exists", tests::Sockets(sock, thandle), fmt, args);
  va_end(args);
  if (asked.answer.exists) return *asked.answer.exists;
  return tests::Original("maapi_exists", maapi_exists)(sock, thandle, "%s", asked.path.c_str());
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

int maapi_get_u_int16_elem(int sock, int thandle, uint16_t* rval, const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  const int result =
      tests::Read("maapi_get_u_int16_elem", maapi_get_u_int16_elem, sock, thandle, rval, fmt, args,
                  [rval](const confd_value_t& value) { *rval = CONFD_GET_UINT16(&value); });
  va_end(args);
  return result;
}

int maapi_get_u_int32_elem(int sock, int thandle, uint32_t* rval, const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  const int result =
      tests::Read("maapi_get_u_int32_elem", maapi_get_u_int32_elem, sock, thandle, rval, fmt, args,
                  [rval](const confd_value_t& value) { *rval = CONFD_GET_UINT32(&value); });
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

int cdb_get_int32(int sock, int32_t* rval, const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  const tests::Asked asked("cdb_get_int32", std::to_string(sock), fmt, args);
  va_end(args);
  if (asked.answer.value) *rval = CONFD_GET_INT32(&*asked.answer.value);
  if (asked.answer.read) return *asked.answer.read;
  return tests::Original("cdb_get_int32", cdb_get_int32)(sock, rval, "%s", asked.path.c_str());
}

int maapi_init_cursor(int sock, int thandle, maapi_cursor* mc, const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  const tests::Asked asked("maapi_init_cursor", tests::Sockets(sock, thandle), fmt, args);
  va_end(args);
  return tests::Original("maapi_init_cursor", maapi_init_cursor)(sock, thandle, mc, "%s",
                                                                 asked.path.c_str());
}

int maapi_get_next(maapi_cursor* mc) {
  const int result = tests::Original("maapi_get_next", maapi_get_next)(mc);
  if (in_force == nullptr) return result;
  if (mc->n != 0 && in_force->on_entry) in_force->on_entry(*mc);
  in_force->cursor = *mc;
  return result;
}

void maapi_destroy_cursor(maapi_cursor* mc) {
  tests::Original("maapi_destroy_cursor", maapi_destroy_cursor)(mc);
  if (in_force != nullptr) in_force->cursor = {};
}

int maapi_xpath_eval_expr(int sock, int thandle, const char* expr, char** res, void (*trace)(char*),
                          const char* fmtpath, ...) {
  va_list args;
  va_start(args, fmtpath);
  const std::string path = tests::Format(fmtpath, args);
  va_end(args);
  if (in_force != nullptr) {
    in_force->expressions.push_back({sock, thandle, expr, trace != nullptr, fmtpath});
    if (in_force->xpath) {
      *res = in_force->xpath->text ? strdup(in_force->xpath->text->c_str()) : nullptr;
      return in_force->xpath->result;
    }
  }
  return tests::Original("maapi_xpath_eval_expr", maapi_xpath_eval_expr)(sock, thandle, expr, res,
                                                                         trace, "%s", path.c_str());
}

int maapi_keypath_diff_iterate(int sock, int thandle, maapi_iterate_fn iter, int flags,
                               void* initstate, const char* fmtpath, ...) {
  va_list args;
  va_start(args, fmtpath);
  const std::string path = tests::Format(fmtpath, args);
  va_end(args);
  if (in_force != nullptr) {
    in_force->iterations.push_back({sock, thandle, flags, initstate, path});
    if (in_force->on_iterate) return in_force->on_iterate(iter, initstate);
  }
  return tests::Original("maapi_keypath_diff_iterate", maapi_keypath_diff_iterate)(
      sock, thandle, iter, flags, initstate, "%s", path.c_str());
}

int confd_pp_value(char* buf, int bufsiz, const confd_value_t* v) {
  const int length = tests::Original("confd_pp_value", confd_pp_value)(buf, bufsiz, v);
  if (in_force == nullptr) return length;
  const auto text = in_force->printed_instead.find(buf);
  if (text == in_force->printed_instead.end()) return length;
  return snprintf(buf, static_cast<size_t>(bufsiz), "%s", text->second.c_str());
}

void confd_trans_seterr(confd_trans_ctx* tctx, const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  const std::string text = tests::Format(fmt, args);
  va_end(args);
  if (in_force != nullptr) {
    in_force->error = text;
    in_force->refused = tctx;
    in_force->error_formats.emplace_back(fmt);
    in_force->Record("confd_trans_seterr", "\"" + std::string(fmt) + "\"");
    if (in_force->fails()) return;
  }
  tests::Original("confd_trans_seterr", confd_trans_seterr)(tctx, "%s", text.c_str());
}
