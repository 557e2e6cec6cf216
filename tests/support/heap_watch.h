// The blocks of memory that are allocated and not freed, by C code too: GLib's texts and list nodes
// among them. malloc and its kin are replaced where this is linked.

#ifndef TAVREN_TESTS_HEAP_WATCH_H
#define TAVREN_TESTS_HEAP_WATCH_H

namespace kel::tavren::tests {

// Notes each block that its thread allocates while it is in scope. Two do not nest.
class Heap_Watch {
public:
  Heap_Watch() noexcept;
  ~Heap_Watch();
  Heap_Watch(const Heap_Watch &) = delete;
  Heap_Watch &operator=(const Heap_Watch &) = delete;
};

// How many of the blocks that were noted have not been freed, on whatever thread.
int noted_blocks() noexcept;

void forget_noted_blocks() noexcept;

// False under the sanitizers and under valgrind: they replace the allocator, and look for leaks
// themselves.
bool heap_is_watched();

}  // namespace kel::tavren::tests

#endif
