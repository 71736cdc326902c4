// A work heap between two pages that may not be touched.
#ifndef KELVO_TESTS_SUPPORT_GUARDED_HEAP_H
#define KELVO_TESTS_SUPPORT_GUARDED_HEAP_H

#include <sys/mman.h>

#include <cstdint>
#include <new>

#include "kelvo/kelvo.h"

namespace kelvo::test {

class GuardedHeap {
 public:
  GuardedHeap() {
    void* all = mmap(nullptr, kBytes + 2 * kGuard, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (all == MAP_FAILED) throw std::bad_alloc();
    base_ = static_cast<char*>(all);
    if (mprotect(base_ + kGuard, kBytes, PROT_READ | PROT_WRITE) != 0) throw std::bad_alloc();
  }
  GuardedHeap(const GuardedHeap&) = delete;
  GuardedHeap& operator=(const GuardedHeap&) = delete;
  ~GuardedHeap() { munmap(base_, kBytes + 2 * kGuard); }

  int32_t* cells() { return reinterpret_cast<int32_t*>(base_ + kGuard); }

 private:
  static constexpr size_t kBytes = 4u * KELVO_HEAP_WORDS;
  static constexpr size_t kGuard = 65536;  // whole pages on every machine

  char* base_;
};

}  // namespace kelvo::test

#endif  // KELVO_TESTS_SUPPORT_GUARDED_HEAP_H
