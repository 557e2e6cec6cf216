// The blocks of memory that C++ code allocates: operator new is replaced where this is linked.

#ifndef TAVREN_TESTS_LIVE_BLOCKS_H
#define TAVREN_TESTS_LIVE_BLOCKS_H

namespace kel::tavren::tests {

// How many are allocated and not given back.
long live_blocks() noexcept;

// Has each allocation from now on, on every thread, ask whether it is to fail.
void fail_allocations_when(bool (*asked)() noexcept) noexcept;

}  // namespace kel::tavren::tests

#endif
