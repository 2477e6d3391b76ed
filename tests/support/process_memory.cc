#include "support/process_memory.h"

#include <cstddef>
#include <cstdlib>
#include <new>

namespace tests {

namespace {

bool only_one_fails = false;

}  // namespace

int allocations_left = kUnlimited;
int blocks_held = 0;
void (*on_free)(const void* block) = nullptr;

void FailOneAllocationAfter(int successes) {
  allocations_left = successes;
  only_one_fails = true;
}

}  // namespace tests

// Not inlined: g++ takes the malloc of one and the free of the other for a mismatch otherwise.

[[gnu::noinline]] void* operator new(std::size_t size) {
  if (tests::allocations_left == 0) {
    if (tests::only_one_fails) tests::allocations_left = tests::kUnlimited;
    tests::only_one_fails = false;
    throw std::bad_alloc();
  }
  if (tests::allocations_left > 0) --tests::allocations_left;
  void* const block = malloc(size == 0 ? 1 : size);
  if (block == nullptr) throw std::bad_alloc();
  ++tests::blocks_held;
  return block;
}

[[gnu::noinline]] void operator delete(void* block) noexcept {
  if (block == nullptr) return;
  if (tests::on_free != nullptr) tests::on_free(block);
  --tests::blocks_held;
  free(block);
}

void operator delete(void* block, std::size_t /*size*/) noexcept { operator delete(block); }
