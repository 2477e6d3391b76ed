#include "ztmw.h"

#include <cstdio>
#include <string>
#include <utility>
#include <vector>

#include "framework/host.h"

namespace {

// What the daemon has been told, until a host or a test takes it.
struct Records {
  bool log_enabled = false;
  std::vector<std::string> log_lines;
  std::vector<framework::Fault> faults;
};

// Never destroyed: a plug-in may still report while the process ends.
Records& TheRecords() {
  static auto* const records = new Records();
  return *records;
}

// `fmt` filled with `args`, of any length; `fmt` itself when the C library cannot fill it.
std::string Format(const char* fmt, va_list args) {
  va_list measured;
  va_copy(measured, args);
  const int length = vsnprintf(nullptr, 0, fmt, measured);
  va_end(measured);
  if (length < 0) return fmt;
  std::string text(static_cast<size_t>(length), '\0');
  vsnprintf(text.data(), text.size() + 1, fmt, args);
  return text;
}

}  // namespace

namespace framework {

void SetLogEnabled(bool enabled) { TheRecords().log_enabled = enabled; }

std::vector<std::string> TakeLogLines() { return std::exchange(TheRecords().log_lines, {}); }

std::vector<Fault> TakeFaults() { return std::exchange(TheRecords().faults, {}); }

}  // namespace framework

void* get_config_vald_log_handle() {
  Records& records = TheRecords();
  return records.log_enabled ? &records : nullptr;
}

// A handle that was given out stays good when the log is switched off later: who holds it goes on
// writing.
void ztmw_vlog_debug(void* handle, const char* fmt, va_list args) {
  if (handle == nullptr) return;
  static_cast<Records*>(handle)->log_lines.push_back(Format(fmt, args));
}

void ztmw_gen_fault(int level, const char* function, const char* file, int line,
                    const char* message) {
  TheRecords().faults.push_back({level, function, file, line, message});
}
