#include "framework/Kel/FailingMemory.h"

#include <cstdlib>
#include <new>

namespace {

thread_local std::size_t allocationsUntilFailure = 0;  // 0: none fails
thread_local std::size_t untilNextFailure = 0;         // once one has failed
thread_local bool hasFailed = false;

void* allocate(std::size_t size, std::size_t align) {
  if (allocationsUntilFailure != 0 && --allocationsUntilFailure == 0) {
    hasFailed = true;
    allocationsUntilFailure = untilNextFailure;
    throw std::bad_alloc();
  }
  void* block = nullptr;
  if (align <= alignof(std::max_align_t)) {
    block = std::malloc(size == 0 ? 1 : size);
  } else if (posix_memalign(&block, align, size) != 0) {
    block = nullptr;
  }
  if (block == nullptr) {
    throw std::bad_alloc();
  }
  return block;
}

}  // namespace

FailingMemory::FailingMemory(std::size_t nth, Then then) noexcept {
  hasFailed = false;
  untilNextFailure = then == Then::staysAway ? 1 : 0;
  allocationsUntilFailure = nth;
}

FailingMemory::~FailingMemory() { allocationsUntilFailure = 0; }

bool FailingMemory::failed() noexcept { return hasFailed; }

void* operator new(std::size_t size) { return allocate(size, 1); }
void* operator new(std::size_t size, std::align_val_t align) {
  return allocate(size, static_cast<std::size_t>(align));
}
void operator delete(void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t) noexcept { std::free(block); }
void operator delete(void* block, std::align_val_t) noexcept { std::free(block); }
void operator delete(void* block, std::size_t, std::align_val_t) noexcept { std::free(block); }
