// What a DLL without any runtime library needs: its entry routine, and the memory functions that compilers call.
//
// The DLL imports nothing, so nothing can be missing where it is loaded, and nothing runs at load time.
#include <cstddef>
#include <cstdint>

extern "C" {

int __stdcall DllMainCRTStartup(void* /*module*/, uint32_t /*reason*/, void* /*reserved*/) {
  return 1;
}

// Written with string instructions, which no compiler turns back into calls of themselves.
void* memcpy(void* __restrict to, const void* __restrict from, size_t count) {
  void* start = to;
  asm volatile("rep movsb" : "+D"(to), "+S"(from), "+c"(count) : : "memory");
  return start;
}

void* memset(void* to, int value, size_t count) {
  void* start = to;
  asm volatile("rep stosb" : "+D"(to), "+c"(count) : "a"(value) : "memory");
  return start;
}

void* memmove(void* to, const void* from, size_t count) {
  if (reinterpret_cast<uintptr_t>(to) - reinterpret_cast<uintptr_t>(from) >= count) return memcpy(to, from, count);
  void* last = static_cast<char*>(to) + count - 1;
  const void* last_from = static_cast<const char*>(from) + count - 1;
  asm volatile("std\n\trep movsb\n\tcld" : "+D"(last), "+S"(last_from), "+c"(count) : : "memory", "cc");
  return to;
}

size_t strlen(const char* text) {
  size_t length = 0;
  while (static_cast<const volatile char*>(text)[length] != 0) ++length;
  return length;
}

}  // extern "C"
