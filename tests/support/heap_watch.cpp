#include "heap_watch.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <mutex>

#include <glib.h>

namespace kel::tavren::tests {
namespace {

// The addresses of blocks. Used during allocations, so it allocates nothing.
class Block_Set {
public:
  void add(const void *block) noexcept {
    const std::lock_guard lock(mutex_);
    if (count_ == LIMIT) std::abort();
    std::size_t slot = home_of(block);
    while (slots_[slot] != nullptr)
      slot = next(slot);
    slots_[slot] = block;
    ++count_;
  }

  // Returns whether the block was in the set.
  bool remove(const void *block) noexcept {
    if (block == nullptr || count_ == 0) return false;
    const std::lock_guard lock(mutex_);
    std::size_t slot = home_of(block);
    while (slots_[slot] != block) {
      if (slots_[slot] == nullptr) return false;
      slot = next(slot);
    }
    close_gap(slot);
    --count_;
    return true;
  }

  void clear() noexcept {
    const std::lock_guard lock(mutex_);
    slots_.fill(nullptr);
    count_ = 0;
  }

  int size() const noexcept { return count_; }

private:
  static constexpr std::size_t SLOTS = std::size_t{1} << 18U;
  static constexpr int LIMIT = SLOTS / 2;

  static std::size_t home_of(const void *block) noexcept {
    constexpr std::uint64_t SPREAD = 0x9E3779B97F4A7C15;  // Fibonacci hashing
    return (reinterpret_cast<std::uintptr_t>(block) * SPREAD) >> 46U;
  }
  static std::size_t next(std::size_t slot) noexcept { return (slot + 1) % SLOTS; }

  // Moves up the blocks behind the slot that are not in their home slots.
  void close_gap(std::size_t gap) noexcept {
    for (std::size_t slot = next(gap); slots_[slot] != nullptr; slot = next(slot)) {
      const std::size_t from_home = (slot - home_of(slots_[slot])) % SLOTS;
      if (from_home < (slot - gap) % SLOTS) continue;
      slots_[gap] = slots_[slot];
      gap = slot;
    }
    slots_[gap] = nullptr;
  }

  std::mutex mutex_;
  std::atomic<int> count_ = 0;
  std::array<const void *, SLOTS> slots_{};
};

Block_Set noted;
thread_local bool noting = false;

}  // namespace

Heap_Watch::Heap_Watch() noexcept {
  noting = true;
}

Heap_Watch::~Heap_Watch() {
  noting = false;
}

int noted_blocks() noexcept {
  return noted.size();
}

void forget_noted_blocks() noexcept {
  noted.clear();
}

bool heap_is_watched() {
  const int before = noted_blocks();
  gpointer block = nullptr;
  {
    const Heap_Watch watch;
    block = g_malloc(1);
  }
  const bool seen = noted_blocks() == before + 1;
  g_free(block);
  return seen;
}

}  // namespace kel::tavren::tests

#if defined(__has_feature)
#define TAVREN_HAS_FEATURE(feature) __has_feature(feature)
#else
#define TAVREN_HAS_FEATURE(feature) 0
#endif

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__) &&                             \
    !TAVREN_HAS_FEATURE(address_sanitizer) && !TAVREN_HAS_FEATURE(thread_sanitizer)

namespace {

void *note(void *block) noexcept {
  if (kel::tavren::tests::noting && block != nullptr) kel::tavren::tests::noted.add(block);
  return block;
}

}  // namespace

extern "C" {

// The C library's functions, by the names that remain available when they are replaced below.
void *__libc_malloc(std::size_t size);
void *__libc_calloc(std::size_t nmemb, std::size_t size);
void *__libc_realloc(void *ptr, std::size_t size);
void __libc_free(void *ptr);

void *malloc(std::size_t size) noexcept {
  return note(__libc_malloc(size));
}

void *calloc(std::size_t nmemb, std::size_t size) noexcept {
  return note(__libc_calloc(nmemb, size));
}

// Growing an existing block does not make it a new one.
void *realloc(void *ptr, std::size_t size) noexcept {
  if (ptr == nullptr) return note(__libc_realloc(ptr, size));
  const bool was_noted = kel::tavren::tests::noted.remove(ptr);
  void *const moved = __libc_realloc(ptr, size);
  void *const remaining = moved != nullptr || size == 0 ? moved : ptr;
  if (was_noted && remaining != nullptr) kel::tavren::tests::noted.add(remaining);
  return moved;
}

void free(void *ptr) noexcept {
  kel::tavren::tests::noted.remove(ptr);
  __libc_free(ptr);
}

}  // extern "C"

#endif
