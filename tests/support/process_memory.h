// The heap of a test program. process_memory.cc replaces operator new and delete of the program
// that links it.
#ifndef TESTS_SUPPORT_PROCESS_MEMORY_H_
#define TESTS_SUPPORT_PROCESS_MEMORY_H_

namespace tests {

constexpr int kUnlimited = -1;

/// How many more allocations succeed; those behind them throw std::bad_alloc.
extern int allocations_left;

/// Makes the allocation behind the next `successes` fail, and no other.
void FailOneAllocationAfter(int successes);

/// How many blocks were taken and not given back.
extern int blocks_held;

/// While set, told of every block before it is given back. Must not allocate.
extern void (*on_free)(const void* block);

}  // namespace tests

#endif  // TESTS_SUPPORT_PROCESS_MEMORY_H_
