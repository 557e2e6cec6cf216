#include "disturbance.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <new>

#include <dlfcn.h>

#include <tavren/capture/media_helper.h>

namespace kel::tavren::tests {
namespace {

std::atomic<long> blocks{0};

thread_local bool disturbing = false;
Disturbance plan;
Observed seen;

bool allocation_fails() {
  if (!disturbing) return false;
  const int number = ++seen.allocations;
  return number == plan.allocation ||
         (plan.persistent && plan.allocation != 0 && number > plan.allocation);
}

void *allocate(std::size_t size) noexcept {
  void *const memory = allocation_fails() ? nullptr : std::malloc(size != 0 ? size : 1);
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

const void *base_of_library_with(const void *address) {
  Dl_info info{};
  return dladdr(address, &info) != 0 ? info.dli_fbase : nullptr;
}

bool is_in_library(const void *address) {
  static const void *const library =
      base_of_library_with(reinterpret_cast<const void *>(&capture::Media_Helper::get_media_type));
  return base_of_library_with(address) == library;
}

}  // namespace

void disturb_with(const Disturbance &disturbance) {
  constexpr std::size_t MORE_THAN_THE_LIBRARY_CALLS = 100;
  plan = disturbance;
  seen.allocations = 0;
  seen.calls.clear();
  seen.calls.reserve(MORE_THAN_THE_LIBRARY_CALLS);
}

const Observed &observed() {
  return seen;
}

long live_blocks() {
  return blocks;
}

Disturbed::Disturbed() {
  disturbing = true;
}

Disturbed::~Disturbed() {
  disturbing = false;
}

// Within the room that was reserved: nothing is allocated here.
bool fails_now(const char *function, const void *caller) {
  if (!disturbing || !is_in_library(caller)) return false;
  auto counted = std::find_if(seen.calls.begin(), seen.calls.end(),
                              [function](const auto &call) { return call.first == function; });
  if (counted == seen.calls.end()) counted = seen.calls.insert(counted, {function, 0});
  const int number = ++counted->second;
  return plan.function == function && (plan.call == number || plan.call == EVERY_CALL);
}

}  // namespace kel::tavren::tests

using kel::tavren::tests::allocate;
using kel::tavren::tests::allocate_or_throw;
using kel::tavren::tests::release;

// All of them, so that each delete meets the new that it belongs to.
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
