// The logger in a process in which the daemon's log is off at the first use. A program of its own,
// because the first use decides for the life of the process.
#include <gtest/gtest.h>

#include <cstdarg>

#include "validate_logger.h"
#include "ztmw.h"

using ip_application::config_valid::ValidateLogger;

// The daemon's log; these definitions win over those of libframework.

namespace {

int the_log = 0;
void* handle_to_give = nullptr;
int times_asked = 0;
int times_written = 0;

}  // namespace

void* get_config_vald_log_handle() {
  ++times_asked;
  return handle_to_give;
}

void ztmw_vlog_debug(void* /*handle*/, const char* /*fmt*/, va_list /*args*/) { ++times_written; }

namespace {

TEST(ValidateLoggerOff, StaysOffWhenTheLogIsSwitchedOnLater) {
  ValidateLogger::Log("%s", "lost");
  EXPECT_EQ(times_asked, 1);

  handle_to_give = &the_log;
  ValidateLogger::Log("%s", "lost as well");
  EXPECT_EQ(times_asked, 1);
  EXPECT_EQ(times_written, 0);
}

}  // namespace
