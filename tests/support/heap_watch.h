// Records blocks of memory that are allocated and not freed, including those of C code such as
// GLib's texts and list nodes. Programs that link this replace malloc() and related functions.

#ifndef TAVREN_TESTS_HEAP_WATCH_H
#define TAVREN_TESTS_HEAP_WATCH_H

namespace kel::tavren::tests {

// Records each block that its thread allocates while it is in scope. Instances must not be nested.
class Heap_Watch {
public:
  Heap_Watch() noexcept;
  ~Heap_Watch();
  Heap_Watch(const Heap_Watch &) = delete;
  Heap_Watch &operator=(const Heap_Watch &) = delete;
};

// Returns the number of recorded blocks that no thread has freed.
int noted_blocks() noexcept;

void forget_noted_blocks() noexcept;

// Returns false under the sanitizers and valgrind, which replace the allocator and check for leaks
// themselves.
bool heap_is_watched();

}  // namespace kel::tavren::tests

#endif
