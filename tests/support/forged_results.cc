#include "forged_results.h"

#include <unistd.h>

#include <cstdint>
#include <filesystem>
#include <map>
#include <string_view>

#include "confd_lib.h"

namespace {

namespace fs = std::filesystem;

constexpr uint32_t kFar = 4000000000;

// The open pipe that is not standard output or standard error.
int ResultPipe() {
  std::error_code ignored;
  const fs::path output = fs::read_symlink("/proc/self/fd/1", ignored);
  for (const auto& entry : fs::directory_iterator("/proc/self/fd")) {
    const fs::path target = fs::read_symlink(entry.path(), ignored);
    if (target.native().starts_with("pipe:") && target != output) {
      return std::stoi(entry.path().filename());
    }
  }
  return -1;
}

void Write(const std::string& bytes) {
  static const int pipe = ResultPipe();
  for (size_t at = 0; at < bytes.size();) {
    const ssize_t written = write(pipe, bytes.data() + at, bytes.size() - at);
    if (written <= 0) _exit(99);
    at += static_cast<size_t>(written);
  }
}

// The host's records as bytes. They are written down here once more, as a module with the host's
// own code in it could not be unloaded: g++ makes symbols of std::visit that stay for ever.

std::string Number(uint32_t number) {
  return {reinterpret_cast<const char*>(&number), sizeof(number)};
}

std::string Text(const std::string& text) {
  return Number(static_cast<uint32_t>(text.size())) + text;
}

std::string Framed(char kind, const std::string& fields) { return Text(kind + fields); }

std::string Stage(const std::string& stage) { return Framed(0, Text(stage)); }
std::string Begin(uint32_t call) { return Framed(1, Number(call)); }
std::string Unusable() { return Framed(3, Text("forged")); }
std::string Failed(const std::string& reason) { return Framed(4, Text(reason)); }
std::string Done() { return Framed(5, Number(0)); }

// An answer that took no time and no call, and with it neither log lines nor faults.
std::string End(uint32_t call, int result = CONFD_OK, const std::string& text = "") {
  const std::string told = text.empty() ? std::string(1, 0) : '\1' + Text(text);
  return Framed(2, Number(call) + Number(static_cast<uint32_t>(result)) + told +
                       std::string(2 * sizeof(uint64_t) + 2 * sizeof(uint32_t), 0));
}

// Answers for all calls that the host has, and for as many more.
void AnswerWithoutEnd() {
  for (uint32_t call = 0; call < 1000; ++call) {
    Write(End(call));
    Write(Begin(call + 1));
  }
}

// Answers as large as a record can be, for every call that the host may have.
void Flood() {
  const std::string text(60u << 20, 'x');
  for (uint32_t call = 0;; ++call) {
    Write(End(call, CONFD_OK, text));
    Write(Begin(call + 1));
  }
}

// By what was asked for. A function, as it is also called while the plug-in is loaded.
std::string Forgery(std::string_view what) {
  static const std::map<std::string_view, std::string> forgeries = {
      {"begin-far", Begin(kFar)},
      {"begin-now", Begin(0)},
      {"begin-next", Begin(1)},
      {"end-far", End(kFar)},
      {"end-next", End(1)},
      {"end-now", End(0)},
      {"begin-and-end-far", End(0) + Begin(kFar) + End(kFar)},
      {"begin-after-refusal", End(0, CONFD_ERR) + Begin(1) + End(1)},
      {"finish", End(0) + Stage("lib_finish")},
      {"rest-of-the-run", End(0) + Stage("lib_finish") + Stage("unloading") + Done()},
      {"done", Done()},
      {"done-after-answer", End(0) + Done()},
      {"stage-again", Stage("lib_init")},
      {"unusable", Unusable()},
      {"failed", Failed("forged")},
      {"failed-without-reason", Failed("")},
  };
  const auto found = forgeries.find(what);
  return found == forgeries.end() ? "" : found->second;
}

}  // namespace

void ForgeResults(const std::string& how) {
  std::string_view what = how;
  if (!what.starts_with("forge-")) return;
  what.remove_prefix(6);
  const bool ends = what.ends_with("-exit");
  if (ends) what.remove_suffix(5);
  if (what == "flood") Flood();
  if (what == "all-and-more") AnswerWithoutEnd();
  if (what == "part") Write(End(0).substr(0, 9));
  if (what == "false-length") Write(std::string("\x04\0\0\1", 4));
  Write(Forgery(what));
  if (ends) _exit(0);
}
