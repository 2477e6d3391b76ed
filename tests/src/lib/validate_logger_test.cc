// The logger in a process in which the daemon's log is on at the first use.
#include "validate_logger.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <latch>
#include <mutex>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

#include "ztmw.h"

using ip_application::config_valid::ValidateLogger;

// The daemon's log; these definitions win over those of libframework.

namespace {

constexpr int kFirstUsers = 2;
constexpr int kTurns = 1000;  // for the other thread to ask as well, if nothing keeps it from that

int the_log = 0;
void* handle_to_give = &the_log;
std::latch first_users(kFirstUsers);
std::atomic<int> times_asked = 0;
std::mutex written;  // guards the rest
void* handle_written_to = nullptr;
const char* format_written = nullptr;
std::vector<std::string> records;

}  // namespace

void* get_config_vald_log_handle() {
  ++times_asked;
  for (int turn = 0; turn < kTurns && times_asked < kFirstUsers; ++turn) std::this_thread::yield();
  return handle_to_give;
}

void ztmw_vlog_debug(void* handle, const char* fmt, va_list args) {
  const std::lock_guard lock(written);
  handle_written_to = handle;
  format_written = fmt;
  char text[8192];
  ASSERT_LT(vsnprintf(text, sizeof(text), fmt, args), static_cast<int>(sizeof(text)));
  records.emplace_back(text);
}

namespace {

// Nothing runs at the end of the process: the logger stays usable to the last.
static_assert(std::is_trivially_destructible_v<ValidateLogger>);
static_assert(sizeof(ValidateLogger) == sizeof(void*));

// One test, because what is tested is the first use in the process.
TEST(ValidateLoggerOn, AsksForTheHandleOnceAndWritesToIt) {
  EXPECT_EQ(times_asked, 0) << "asked before the first use";

  {
    std::array<std::jthread, kFirstUsers> users;
    for (std::jthread& user : users) {
      user = std::jthread([] {
        first_users.arrive_and_wait();
        ValidateLogger::Log("%s", "first use");
      });
    }
  }
  EXPECT_EQ(times_asked, 1);
  EXPECT_EQ(handle_written_to, &the_log);
  EXPECT_EQ(records, std::vector<std::string>(kFirstUsers, "first use"));
  records.clear();

  ValidateLogger::Log("plain");
  ValidateLogger::Log("'%s' and %u", "a 100% name", 7u);
  EXPECT_EQ(handle_written_to, &the_log);

  // The daemon gets the format itself, so nothing on the way cuts a record.
  constexpr char kFormat[] = "<%s>";
  const std::string long_text(5000, 'x');
  ValidateLogger::Log(kFormat, long_text.c_str());
  EXPECT_EQ(format_written, kFormat);

  handle_to_give = nullptr;
  ValidateLogger::Log("the log is off by now");
  EXPECT_EQ(handle_written_to, &the_log);

  EXPECT_EQ(times_asked, 1);
  EXPECT_EQ(records, (std::vector<std::string>{"plain", "'a 100% name' and 7",
                                               "<" + long_text + ">", "the log is off by now"}));
  EXPECT_EQ(&ValidateLogger::instance(), &ValidateLogger::instance());
}

}  // namespace
