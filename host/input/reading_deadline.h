// A limit on the time that a file may take until it is read and checked against the data model.
#ifndef HOST_INPUT_READING_DEADLINE_H_
#define HOST_INPUT_READING_DEADLINE_H_

#include <chrono>
#include <string>

namespace ipvald {

/// Ends the process with `status` and one line on standard error when the time is up before the
/// object goes out of scope, whatever the process does then: waiting for a pipe, or inside a
/// library. REQUIRES: there is one at a time, and SIGALRM is not used otherwise.
class ReadingDeadline {
 public:
  ReadingDeadline(const std::string& file, std::chrono::seconds limit, int status);
  ~ReadingDeadline();
  ReadingDeadline(const ReadingDeadline&) = delete;
  ReadingDeadline& operator=(const ReadingDeadline&) = delete;
};

}  // namespace ipvald

#endif  // HOST_INPUT_READING_DEADLINE_H_
