#include "support/fake_maapi.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <utility>

#include "confd_lib.h"
#include "confd_maapi.h"

namespace tests {
namespace {

FakeMaapi* installed = nullptr;

FakeMaapi& Installed() {
  if (installed == nullptr) {
    fputs("a ConfD call was made, but no FakeMaapi is there to take it\n", stderr);
    abort();
  }
  return *installed;
}

std::string Format(const char* fmt, va_list args) {
  char text[1024];
  vsnprintf(text, sizeof(text), fmt, args);
  return text;
}

std::string CallText(const char* function, int sock, int thandle, const char* fmt) {
  return std::string(function) + "(" + std::to_string(sock) + ", " + std::to_string(thandle) +
         ", \"" + fmt + "\")";
}

}  // namespace

FakeMaapi::FakeMaapi() { installed = this; }

FakeMaapi::~FakeMaapi() { installed = nullptr; }

std::vector<std::string> FakeMaapi::TakeCalls() { return std::exchange(calls_, {}); }

void FakeMaapi::Record(const std::string& call) {
  calls_.push_back(call);
  if (on_call) on_call();
}

FakeLeaf FakeMaapi::Find(const std::string& path) const {
  const auto leaf = leaves.find(path);
  return leaf == leaves.end() ? FakeLeaf() : leaf->second;
}

}  // namespace tests

int maapi_exists(int sock, int thandle, const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  const std::string path = tests::Format(fmt, args);
  va_end(args);
  tests::Installed().Record(tests::CallText("maapi_exists", sock, thandle, fmt));
  return tests::Installed().Find(path).exists;
}

int maapi_get_u_int16_elem(int sock, int thandle, uint16_t* rval, const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  const std::string path = tests::Format(fmt, args);
  va_end(args);
  tests::Installed().Record(tests::CallText("maapi_get_u_int16_elem", sock, thandle, fmt));
  const tests::FakeLeaf leaf = tests::Installed().Find(path);
  if (!leaf.value.has_value()) return leaf.failure;
  *rval = *leaf.value;
  return CONFD_OK;
}

void confd_trans_seterr(confd_trans_ctx* tctx, const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  tests::FakeMaapi& fake = tests::Installed();
  fake.error = tests::Format(fmt, args);
  fake.refused = tctx;
  va_end(args);
  fake.Record("confd_trans_seterr(\"" + std::string(fmt) + "\")");
}
