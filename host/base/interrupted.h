// A signal that asks the program to stop, as an exception.
#ifndef HOST_BASE_INTERRUPTED_H_
#define HOST_BASE_INTERRUPTED_H_

#include <stdexcept>

namespace ipvald {

/// SIGINT, SIGTERM or SIGHUP came while the plug-in ran in its child process, which is gone.
class Interrupted : public std::runtime_error {
 public:
  explicit Interrupted(int signal) : std::runtime_error("interrupted"), signal_(signal) {}
  int signal() const { return signal_; }

 private:
  int signal_;
};

}  // namespace ipvald

#endif  // HOST_BASE_INTERRUPTED_H_
