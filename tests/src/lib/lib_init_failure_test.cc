// lib_init in a process without memory.
#include <gtest/gtest.h>

#include <new>

#include "ip_app_validation/ip_app_validation.h"
#include "support/process_memory.h"

namespace {

using tests::allocations_left;
using tests::blocks_held;
using tests::kUnlimited;

// What one call of lib_init did when only `allocations` of its allocations succeeded.
struct Attempt {
  bool thrown = false;
  int blocks_kept = 0;
};

Attempt InitWith(int allocations, void** out) {
  Attempt attempt;
  const int held_before = blocks_held;
  allocations_left = allocations;
  try {
    lib_init(out);
  } catch (const std::bad_alloc&) {
    attempt.thrown = true;
  }
  allocations_left = kUnlimited;
  attempt.blocks_kept = blocks_held - held_before;
  return attempt;
}

TEST(LibInitFailure, ReleasesEverythingWhicheverAllocationFails) {
  int untouched = 0;
  void* context = &untouched;
  int allocations = 0;
  Attempt attempt = InitWith(allocations, &context);
  while (attempt.thrown) {
    EXPECT_EQ(attempt.blocks_kept, 0) << "after " << allocations << " allocations";
    ASSERT_EQ(context, &untouched) << "after " << allocations << " allocations";
    ++allocations;
    attempt = InitWith(allocations, &context);
  }
  // At least the Config, its route table and its list of interface tables.
  EXPECT_GE(allocations, 3);
  EXPECT_EQ(attempt.blocks_kept, allocations);

  const int held_before = blocks_held;
  EXPECT_EQ(lib_finish(&context), 0);
  EXPECT_EQ(held_before - blocks_held, allocations);
}

}  // namespace
