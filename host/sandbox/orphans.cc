#include "orphans.h"

#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <fstream>
#include <vector>

namespace ipvald {
namespace {

// A plug-in that starts processes faster than they are ended must not hold the host for ever.
constexpr int kMaxRounds = 1000;

std::vector<pid_t> Children() {
  std::ifstream list("/proc/thread-self/children");
  std::vector<pid_t> children;
  for (pid_t child = 0; list >> child;) children.push_back(child);
  return children;
}

}  // namespace

OrphanKeeper::OrphanKeeper() {
  if (!Children().empty() || prctl(PR_GET_CHILD_SUBREAPER, &previous_) != 0) return;
  keeps_ = prctl(PR_SET_CHILD_SUBREAPER, 1) == 0;
}

OrphanKeeper::~OrphanKeeper() {
  if (keeps_) prctl(PR_SET_CHILD_SUBREAPER, previous_);
}

void OrphanKeeper::EndAll() const {
  if (!keeps_) return;
  for (int round = 0; round < kMaxRounds; ++round) {
    const std::vector<pid_t> children = Children();
    if (children.empty()) return;
    for (const pid_t child : children) kill(child, SIGKILL);
    // What a child started becomes a child of this process now, and is found in the next round.
    for (const pid_t child : children) waitpid(child, nullptr, 0);
  }
}

}  // namespace ipvald
