// lib_init in a process without memory. A program of its own, because it replaces operator new.
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdlib>
#include <new>

#include "ip_app_validation/ip_app_validation.h"

namespace {

constexpr int kUnlimited = -1;

int allocations_left = kUnlimited;
int blocks_held = 0;

}  // namespace

// Not inlined: g++ takes the malloc of one and the free of the other for a mismatch otherwise.

[[gnu::noinline]] void* operator new(std::size_t size) {
  if (allocations_left == 0) throw std::bad_alloc();
  if (allocations_left > 0) --allocations_left;
  void* const block = malloc(size == 0 ? 1 : size);
  if (block == nullptr) throw std::bad_alloc();
  ++blocks_held;
  return block;
}

[[gnu::noinline]] void operator delete(void* block) noexcept {
  if (block == nullptr) return;
  --blocks_held;
  free(block);
}

void operator delete(void* block, std::size_t /*size*/) noexcept { operator delete(block); }

namespace {

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
