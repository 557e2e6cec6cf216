// Counts blocks of memory allocated by C++ code. Programs that link this replace operator new.

#ifndef TAVREN_TESTS_LIVE_BLOCKS_H
#define TAVREN_TESTS_LIVE_BLOCKS_H

namespace kel::tavren::tests {

// Returns the number of blocks that are allocated and not freed.
long live_blocks() noexcept;

// Makes each later allocation, on any thread, call the function to determine whether to fail.
void fail_allocations_when(bool (*asked)() noexcept) noexcept;

}  // namespace kel::tavren::tests

#endif
