#include "live_blocks.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<long> blocks = 0;
bool (*fails)() noexcept = nullptr;

void *allocate(std::size_t size) noexcept {
  if (fails != nullptr && fails()) return nullptr;
  void *const memory = std::malloc(size != 0 ? size : 1);
  if (memory != nullptr) ++blocks;
  return memory;
}

void *allocate_or_throw(std::size_t size) {
  void *const memory = allocate(size);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}

void release(void *memory) noexcept {
  if (memory != nullptr) --blocks;
  std::free(memory);
}

}  // namespace

// All forms except the aligned ones, which are not used here, so that each delete matches its new.
void *operator new(std::size_t size) {
  return allocate_or_throw(size);
}
void *operator new[](std::size_t size) {
  return allocate_or_throw(size);
}
void *operator new(std::size_t size, const std::nothrow_t &) noexcept {
  return allocate(size);
}
void *operator new[](std::size_t size, const std::nothrow_t &) noexcept {
  return allocate(size);
}
void operator delete(void *memory) noexcept {
  release(memory);
}
void operator delete[](void *memory) noexcept {
  release(memory);
}
void operator delete(void *memory, std::size_t) noexcept {
  release(memory);
}
void operator delete[](void *memory, std::size_t) noexcept {
  release(memory);
}
void operator delete(void *memory, const std::nothrow_t &) noexcept {
  release(memory);
}
void operator delete[](void *memory, const std::nothrow_t &) noexcept {
  release(memory);
}

namespace kel::tavren::tests {

long live_blocks() noexcept {
  return blocks;
}

void fail_allocations_when(bool (*asked)() noexcept) noexcept {
  fails = asked;
}

}  // namespace kel::tavren::tests
