// Processes that a child starts and that would outlive it.
#ifndef HOST_SANDBOX_ORPHANS_H_
#define HOST_SANDBOX_ORPHANS_H_

namespace ipvald {

/// While it lives, processes whose parent ends become children of this process, also those that
/// left their process group or session. It does nothing when this process has children from the
/// beginning, for example of the shell that it replaced: theirs could not be told apart.
/// REQUIRES: this process has one thread.
class OrphanKeeper {
 public:
  OrphanKeeper();
  ~OrphanKeeper();
  OrphanKeeper(const OrphanKeeper&) = delete;
  OrphanKeeper& operator=(const OrphanKeeper&) = delete;

  /// Kills all children of this process, and theirs, and waits for their end.
  void EndAll() const;

 private:
  bool keeps_ = false;
  int previous_ = 0;
};

}  // namespace ipvald

#endif  // HOST_SANDBOX_ORPHANS_H_
