// A plug-in that does what no plug-in should. The environment variable MISBEHAVE says where and
// what, one or several times: "validate:abort", "validate:refuse,lib_finish:throw". Without it
// every configuration is accepted.

#include <signal.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <list>
#include <sstream>
#include <stdexcept>
#include <string>

#include "confd_dp.h"
#include "confd_maapi.h"
#include "forged_results.h"
#include "process_tricks.h"
#include "ztconfd.h"
#include "ztmw.h"

#undef NDEBUG
#include <cassert>

namespace {

constexpr int kPrinting = 200000;  // bytes, more than a pipe holds and more than the host keeps

void Hang() {
  for (;;) pause();
}

void CloseDescriptors() {
  for (int fd = 0; fd < 1024; ++fd) close(fd);
}

// Writes bytes that are no results to every pipe that is open.
void WriteGarbage() {
  const std::string garbage(64, '\xff');
  for (int fd = 3; fd < 1024; ++fd) {
    if (write(fd, garbage.data(), garbage.size()) < 0) continue;
  }
}

void LeaveProcessBehind() {
  if (fork() == 0) Hang();
}

void Misbehave(const std::string& how) {
  if (how == "abort") std::abort();
  if (how == "assert") assert(how == "good");
  if (how == "throw") throw std::invalid_argument("stoul");
  if (how == "throw-int") throw 7;
  if (how == "crash") raise(SIGSEGV);
  if (how == "kill") kill(getpid(), SIGKILL);
  if (how == "kill-group") kill(0, SIGKILL);
  if (how == "hang") Hang();
  if (how == "exit") std::exit(0);
  if (how == "quick-exit") _exit(0);
  if (how == "exit-9") _exit(9);
  if (how == "exit-123") _exit(123);
  if (how == "exit-124") _exit(124);
  if (how == "close") CloseDescriptors();
  if (how == "garbage") WriteGarbage();
  if (how == "leave-process") LeaveProcessBehind();
  if (how == "print") {
    std::puts("said on standard output");
    std::fputs("said on standard error\n", stderr);
  }
  if (how == "print-much") {
    std::fputs(std::string(kPrinting, '.').c_str(), stderr);
    std::fputs("\nlast words\n", stderr);
    std::abort();
  }
  if (how == "signal-host") kill(getppid(), SIGTERM);
  PlayProcessTrick(how);
  ForgeResults(how);
}

// What to do in `where`, "" for nothing.
std::string OrderFor(const std::string& where) {
  const char* orders = std::getenv("MISBEHAVE");
  std::istringstream list(orders == nullptr ? "" : orders);
  for (std::string order; std::getline(list, order, ',');) {
    if (order.compare(0, where.size() + 1, where + ":") == 0) return order.substr(where.size() + 1);
  }
  return "";
}

// Results of validate that are orders, too; kNone when `how` is none of them.
constexpr int kNone = 1000;

int ResultFor(confd_trans_ctx* tctx, const std::string& how) {
  if (how == "return-7") return 7;
  if (how == "refuse-silently") return CONFD_ERR;
  if (how == "refuse" || how.ends_with("-refuse")) {
    ForgeResults(how.substr(0, how.rfind("-refuse")));
    confd_trans_seterr(tctx, "%s", "refused on order");
    return CONFD_ERR;
  }
  if (how == "refuse-not-utf8") {
    confd_trans_seterr(tctx, "%s", "not \xff UTF-8");
    return CONFD_ERR;
  }
  if (how == "warn") {
    confd_trans_seterr(tctx, "%s", "think twice");
    return CONFD_VALIDATION_WARN;
  }
  if (how == "fault") {
    ztmw_gen_fault(2, "Function", "file.cc", 12, "a fault on order");
    return CONFD_OK;
  }
  if (how == "leave-cursor") {
    static std::list<maapi_cursor> cursors;
    const int sock = ztconfd_maapi_socket_get(tctx->vcb_opaque);
    maapi_init_cursor(sock, tctx->thandle, &cursors.emplace_back(), "/config/interface/l3");
    return CONFD_OK;
  }
  return kNone;
}

const bool loaded = (Misbehave(OrderFor("loading")), true);

}  // namespace

extern "C" {

int get_validation_point(char* name, int size) {
  std::snprintf(name, static_cast<size_t>(size), "misbehaving");
  Misbehave(OrderFor("get_validation_point"));
  return OrderFor("get_validation_point") == "return-7" ? 7 : 0;
}

int lib_init(void** context) {
  static bool dummy = loaded;
  *context = &dummy;
  Misbehave(OrderFor("lib_init"));
  return OrderFor("lib_init") == "return-7" ? 7 : 0;
}

int validate(confd_trans_ctx* tctx, confd_hkeypath_t* keypath, confd_value_t* newval) {
  if (keypath == nullptr || newval == nullptr) return 70;
  const std::string order = OrderFor("validate");
  const int result = ResultFor(tctx, order);
  if (result != kNone) return result;
  Misbehave(order);
  return CONFD_OK;
}

int lib_finish(void**) {
  Misbehave(OrderFor("lib_finish"));
  return OrderFor("lib_finish") == "return-7" ? 7 : 0;
}

}  // extern "C"
