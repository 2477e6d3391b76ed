// Too few descriptors, too little memory, no further process: the right verdict, or an error that
// names the limit. Never is the plug-in blamed.
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <functional>
#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <system_error>

#include "configuration_file.h"
#include "support/data_model.h"
#include "transaction.h"

namespace ipvald {
namespace {

constexpr bool kSanitized = !std::string_view(IPAV_SANITIZE).empty();
const std::string kRefused = IPAV_SOURCE_DIR "/examples/address-overlap-refused.json";

const char kTooFewDescriptors[] = "too few file descriptors (ulimit -n): Too many open files";
const char kOutOfMemory[] = "out of memory (ulimit -v): Cannot allocate memory";
const char kNoProcess[] = "no process can be started (ulimit -u): Resource temporarily unavailable";

// The verdict on a change that is refused, or the text of the error, from a process of its own that
// `narrow` puts a limit on. What is read from files was read before.
class Scarcity : public testing::Test {
 protected:
  void SetUp() override {
    if (kSanitized) GTEST_SKIP() << "a sanitizer needs descriptors and memory of its own";
  }

  std::string OutcomeUnder(const std::function<void()>& narrow) const {
    std::FILE* const told = std::tmpfile();
    const pid_t process = fork();
    if (process == 0) {
      dup2(fileno(told), STDOUT_FILENO);
      close_range(STDERR_FILENO + 1, ~0U, 0);
      narrow();
      const std::string outcome = Outcome();
      _exit(write(STDOUT_FILENO, outcome.data(), outcome.size()) < 0 ? 1 : 0);
    }
    int status = 0;
    waitpid(process, &status, 0);
    EXPECT_EQ(status, 0);
    std::string text(1000, '\0');
    std::rewind(told);
    text.resize(std::fread(text.data(), 1, text.size(), told));
    std::fclose(told);
    return text;
  }

 private:
  std::string Outcome() const {
    try {
      const TransactionReport report =
          RunTransaction(running_, candidate_, {.plugin = IPAV_PLUGIN});
      return std::string(NameOf(report.verdict)) + report.diagnostic;
    } catch (const std::system_error& error) {
      return error.what();
    } catch (const std::bad_alloc&) {
      return kOutOfMemory;  // of the host itself
    } catch (const std::exception& error) {
      return std::string("another error: ") + error.what();
    }
  }

  std::shared_ptr<const store::Snapshot> running_ = store::Snapshot::Empty(tests::DataModel());
  std::shared_ptr<const store::Snapshot> candidate_ =
      ReadConfiguration(tests::DataModel(), kRefused).snapshot;
};

void Limit(__rlimit_resource_t resource, rlim_t limit) {
  const rlimit narrow{limit, limit};
  if (setrlimit(resource, &narrow) != 0) _exit(99);
}

// Two pipes and the descriptor for signals, beside the standard ones.
constexpr rlim_t kDescriptorsNeeded = 8;

TEST_F(Scarcity, OfDescriptors) {
  for (rlim_t limit = 3; limit <= 40; ++limit) {
    EXPECT_EQ(OutcomeUnder([limit] { Limit(RLIMIT_NOFILE, limit); }),
              limit < kDescriptorsNeeded ? kTooFewDescriptors : "rejected")
        << limit;
  }
  // Around the number that the pipe of the results gets where the limit allows.
  for (const rlim_t limit : {100u, 199u, 200u, 201u, 202u}) {
    EXPECT_EQ(OutcomeUnder([limit] { Limit(RLIMIT_NOFILE, limit); }), "rejected") << limit;
  }
}

struct MemoryCase {
  __rlimit_resource_t resource;
  int field;  // of /proc/self/statm that tells how much of it is in use, in pages
};

rlim_t InUse(const MemoryCase& memory) {
  std::ifstream statm("/proc/self/statm");
  rlim_t pages = 0;
  for (int field = 0; field <= memory.field; ++field) statm >> pages;
  return pages * static_cast<rlim_t>(sysconf(_SC_PAGESIZE));
}

// Limits from what the process has to 16 MiB more.
TEST_F(Scarcity, OfMemory) {
  for (const MemoryCase& memory : {MemoryCase{RLIMIT_AS, 0}, MemoryCase{RLIMIT_DATA, 5}}) {
    int verdicts = 0;
    int errors = 0;
    for (rlim_t more = 0; more <= 16u << 20; more += 128u << 10) {
      const std::string outcome =
          OutcomeUnder([&] { Limit(memory.resource, InUse(memory) + more); });
      verdicts += outcome == "rejected" ? 1 : 0;
      errors += outcome == kOutOfMemory ? 1 : 0;
      EXPECT_TRUE(outcome == "rejected" || outcome == kOutOfMemory) << more << ": " << outcome;
    }
    EXPECT_GT(verdicts, 0);
    EXPECT_GT(errors, 0);
  }
}

TEST_F(Scarcity, OfProcesses) {
  const auto narrow = [] {
    Limit(RLIMIT_NPROC, 0);
    // Root has no limit.
    if (geteuid() == 0 && setuid(65534) != 0) _exit(99);
  };
  EXPECT_EQ(OutcomeUnder(narrow), kNoProcess);
}

}  // namespace
}  // namespace ipvald
