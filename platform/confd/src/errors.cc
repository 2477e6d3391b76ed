#include "errors.h"

#include <cstdarg>
#include <cstdlib>
#include <utility>

#include "confd/transaction.h"
#include "confd_dp.h"
#include "confd_lib.h"

int confd_errno = 0;

namespace confd {
namespace {

std::string& LastError() {
  static std::string text;
  return text;
}

}  // namespace

int Fail(int code, std::string detail) {
  confd_errno = code;
  LastError() = std::move(detail);
  return CONFD_ERR;
}

TransactionContext::~TransactionContext() { ClearError(); }

void TransactionContext::ClearError() {
  free(ctx_.error.str);
  ctx_.error.str = nullptr;
}

}  // namespace confd

char* confd_lasterr(void) { return confd::LastError().data(); }

char* confd_strerror(int code) {
  struct ErrorText {
    int code;
    const char* text;
  };
  static constexpr ErrorText kTexts[] = {
      {CONFD_ERR_NOEXISTS, "item does not exist"},
      {CONFD_ERR_ALREADY_EXISTS, "item already exists"},
      {CONFD_ERR_ACCESS_DENIED, "access denied"},
      {CONFD_ERR_NOT_WRITABLE, "item is not writable"},
      {CONFD_ERR_BADTYPE, "wrong type of value"},
      {CONFD_ERR_BADPATH, "bad path"},
      {CONFD_ERR_BADSTATE, "wrong state"},
      {CONFD_ERR_INTERNAL, "internal error"},
      {CONFD_ERR_EXTERNAL, "error in application"},
      {CONFD_ERR_PROTOUSAGE, "wrong use of the interface"},
      {CONFD_ERR_NOSESSION, "no session"},
      {CONFD_ERR_XPATH, "bad XPath expression"},
      {CONFD_ERR_NOT_IMPLEMENTED, "not implemented"},
      {CONFD_ERR_NOTRANS, "no such transaction"},
  };
  for (const ErrorText& entry : kTexts) {
    if (entry.code == code) return const_cast<char*>(entry.text);
  }
  return const_cast<char*>("unknown error");
}

void confd_trans_seterr(struct confd_trans_ctx* tctx, const char* fmt, ...) {
  char* text = nullptr;
  va_list args;
  va_start(args, fmt);
  const int length = vasprintf(&text, fmt, args);
  va_end(args);
  if (length < 0) abort();  // out of memory: a refusal must not lose its text
  free(tctx->error.str);
  tctx->error.str = text;
  tctx->error.code = CONFD_ERRCODE_APPLICATION;
}
