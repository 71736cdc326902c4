// A work heap between two pages that may not be touched.
#ifndef KELVO_TESTS_SUPPORT_GUARDED_HEAP_H
#define KELVO_TESTS_SUPPORT_GUARDED_HEAP_H

#include <cstdint>
#include <new>

#if defined(_WIN32)
#include <windows.h>
#else
#include <sys/mman.h>
#endif

#include "kelvo/kelvo.h"

namespace kelvo::test {

class GuardedHeap {
 public:
  GuardedHeap() : base_(Reserve(kBytes + 2 * kGuard)) {
    if (base_ == nullptr || !Open(base_ + kGuard, kBytes)) throw std::bad_alloc();
  }
  GuardedHeap(const GuardedHeap&) = delete;
  GuardedHeap& operator=(const GuardedHeap&) = delete;
  ~GuardedHeap() { Release(base_, kBytes + 2 * kGuard); }

  int32_t* cells() { return reinterpret_cast<int32_t*>(base_ + kGuard); }

 private:
  static constexpr size_t kBytes = 4u * KELVO_HEAP_WORDS;
  static constexpr size_t kGuard = 65536;  // whole pages on every machine

#if defined(_WIN32)
  static char* Reserve(size_t bytes) {
    return static_cast<char*>(VirtualAlloc(nullptr, bytes, MEM_RESERVE, PAGE_NOACCESS));
  }
  static bool Open(char* first, size_t bytes) {
    return VirtualAlloc(first, bytes, MEM_COMMIT, PAGE_READWRITE) != nullptr;
  }
  static void Release(char* all, size_t) {
    VirtualFree(all, 0, MEM_RELEASE);
  }
#else
  static char* Reserve(size_t bytes) {
    void* all = mmap(nullptr, bytes, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    return all == MAP_FAILED ? nullptr : static_cast<char*>(all);
  }
  static bool Open(char* first, size_t bytes) {
    return mprotect(first, bytes, PROT_READ | PROT_WRITE) == 0;
  }
  static void Release(char* all, size_t bytes) {
    munmap(all, bytes);
  }
#endif

  char* base_;
};

}  // namespace kelvo::test

#endif  // KELVO_TESTS_SUPPORT_GUARDED_HEAP_H
