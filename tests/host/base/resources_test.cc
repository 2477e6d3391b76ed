// Limits of the caller: what they are, and how much can be had under them.
#include "resources.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace ipvald {
namespace {

constexpr bool kSanitized = !std::string_view(IPAV_SANITIZE).empty();
constexpr size_t kMebibyte = size_t{1} << 20;

// A limit of this process while it lives.
class Limited {
 public:
  Limited(__rlimit_resource resource, rlim_t limit) : resource_(resource) {
    EXPECT_EQ(getrlimit(resource, &previous_), 0);
    const rlimit lower{std::min(limit, previous_.rlim_max), previous_.rlim_max};
    EXPECT_EQ(setrlimit(resource, &lower), 0);
  }
  ~Limited() { EXPECT_EQ(setrlimit(resource_, &previous_), 0); }
  Limited(const Limited&) = delete;
  Limited& operator=(const Limited&) = delete;

 private:
  __rlimit_resource resource_;
  rlimit previous_{};
};

// Whether whoever started the tests has set a limit on memory.
bool CannotLiftLimits() {
  rlimit space{};
  rlimit data{};
  getrlimit(RLIMIT_AS, &space);
  getrlimit(RLIMIT_DATA, &data);
  return space.rlim_max != RLIM_INFINITY || data.rlim_max != RLIM_INFINITY;
}

constexpr char kLimitedByCaller[] = "the memory of the tests is limited";

TEST(DescriptorLimit, IsThatOfTheCaller) {
  for (const rlim_t limit : {rlim_t{40}, rlim_t{41}}) {
    const Limited limited(RLIMIT_NOFILE, limit);
    EXPECT_EQ(DescriptorLimit(), limit);
  }
}

class Memory : public testing::Test {
 protected:
  void SetUp() override {
    if (CannotLiftLimits()) GTEST_SKIP() << kLimitedByCaller;
  }

 private:
  Limited no_space_limit_{RLIMIT_AS, RLIM_INFINITY};
  Limited no_data_limit_{RLIMIT_DATA, RLIM_INFINITY};
};

TEST_F(Memory, IsNotLimitedByItself) { EXPECT_FALSE(IsMemoryLimited()); }

TEST_F(Memory, IsLimitedByEitherLimit) {
  constexpr rlim_t kFarAway = rlim_t{1} << 60;
  for (const auto resource : {RLIMIT_AS, RLIMIT_DATA}) {
    const Limited limited(resource, kFarAway);
    EXPECT_TRUE(IsMemoryLimited()) << resource;
  }
}

TEST_F(Memory, IsNotLimitedByOtherLimits) {
  const Limited no_core_file(RLIMIT_CORE, 0);
  const Limited small_stack(RLIMIT_STACK, 8 * kMebibyte);
  EXPECT_FALSE(IsMemoryLimited());
}

TEST_F(Memory, IsThereWithoutALimit) { EXPECT_TRUE(HasMemory(SIZE_MAX)); }

TEST_F(Memory, EndsAtTheLimit) {
  if (kSanitized) GTEST_SKIP() << "a sanitizer needs more address space than any limit";
  for (const auto resource : {RLIMIT_AS, RLIMIT_DATA}) {
    const Limited limited(resource, 1024 * kMebibyte);
    EXPECT_FALSE(HasMemory(1024 * kMebibyte)) << resource;
    EXPECT_FALSE(HasMemory(SIZE_MAX)) << resource;
    // Several times: it is given back each time.
    for (int i = 0; i < 3; ++i) EXPECT_TRUE(HasMemory(600 * kMebibyte)) << resource;
    EXPECT_TRUE(HasMemory(kMemoryOfCommand)) << resource;
    EXPECT_TRUE(HasMemory(0)) << resource;
  }
}

// The number of the last descriptor that a command may open, and as many before it.
int LastOfSixteen() {
  std::vector<int> opened;
  for (int i = 0; i < 16; ++i) opened.push_back(open("/", O_PATH | O_CLOEXEC));
  const int last = *std::max_element(opened.begin(), opened.end());
  for (const int fd : opened) close(fd);
  return last;
}

std::string ErrorOfRequireDescriptors() {
  try {
    RequireDescriptors();
  } catch (const ResourceError& error) {
    return error.what();
  }
  return "enough";
}

TEST(Descriptors, AreEnoughForSixteen) {
  const int last = LastOfSixteen();
  const Limited limited(RLIMIT_NOFILE, static_cast<rlim_t>(last) + 1);
  EXPECT_EQ(ErrorOfRequireDescriptors(), "enough");
}

TEST(Descriptors, AreTooFewForFifteen) {
  const int last = LastOfSixteen();
  const Limited limited(RLIMIT_NOFILE, static_cast<rlim_t>(last));
  EXPECT_EQ(ErrorOfRequireDescriptors(),
            "too few file descriptors: " + std::to_string(last) + " allowed (ulimit -n)");
}

TEST(Descriptors, AreNotKept) {
  const int last = LastOfSixteen();
  RequireDescriptors();
  {
    const Limited limited(RLIMIT_NOFILE, static_cast<rlim_t>(last));
    EXPECT_THROW(RequireDescriptors(), ResourceError);
  }
  EXPECT_EQ(LastOfSixteen(), last);
}

}  // namespace
}  // namespace ipvald
