// The logger in a process in which the daemon's log is on at the first use.
#include "validate_logger.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdarg>
#include <cstdio>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

#include "ztmw.h"

using ip_application::config_valid::ValidateLogger;

// The daemon's log; these definitions win over those of libframework.

namespace {

int the_log = 0;
void* handle_to_give = &the_log;
int times_asked = 0;
void* handle_written_to = nullptr;
const char* format_written = nullptr;
std::vector<std::string> records;

}  // namespace

void* get_config_vald_log_handle() {
  ++times_asked;
  return handle_to_give;
}

void ztmw_vlog_debug(void* handle, const char* fmt, va_list args) {
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
    std::array<std::jthread, 4> first_users;
    for (std::jthread& user : first_users) user = std::jthread([] { ValidateLogger::instance(); });
  }
  EXPECT_EQ(times_asked, 1);
  EXPECT_TRUE(records.empty());

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
