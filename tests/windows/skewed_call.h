// Calls a function of the library as hosts of other compilers and the system do: on a stack that is
// aligned to 4 bytes only.
#ifndef QRN_TESTS_WINDOWS_SKEWED_CALL_H_
#define QRN_TESTS_WINDOWS_SKEWED_CALL_H_

#include <cstdint>

struct StackWord {
  StackWord(std::uint32_t number = 0) : word(number) {}
  StackWord(const void* pointer) : word(reinterpret_cast<std::uintptr_t>(pointer)) {}
  std::uint32_t word;
};

struct CallResult {
  std::uint32_t value;
  std::uint32_t poppedBytes;  // what the callee took off the stack
};

// A callee with fewer arguments does not see the other words.
[[gnu::noinline]] inline CallResult CallSkewed(void* callee, const StackWord (&arguments)[4]) {
  CallResult result;
  const StackWord* words = arguments;
  asm volatile(
      "movl %%esp, %%esi\n\t"
      "andl $-16, %%esp\n\t"
      "subl $4, %%esp\n\t"
      "pushl 12(%%edi)\n\t"
      "pushl 8(%%edi)\n\t"
      "pushl 4(%%edi)\n\t"
      "pushl (%%edi)\n\t"
      "movl %%esp, %%edi\n\t"
      "call *%%ebx\n\t"
      "movl %%esp, %%ecx\n\t"
      "subl %%edi, %%ecx\n\t"
      "movl %%esi, %%esp"
      : "=a"(result.value), "=c"(result.poppedBytes), "+D"(words)
      : "b"(callee)
      : "edx", "esi", "memory", "cc");
  return result;
}

#endif  // QRN_TESTS_WINDOWS_SKEWED_CALL_H_
