// What the DLL takes from its own heap and not from the C++ library, whose operators bring its
// exceptions along: a hundred kilobytes of code, and a pool that is allocated at loading and never
// given back. The library neither throws nor catches.
#include <cstdlib>
#include <new>

void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept { return std::malloc(bytes); }
void* operator new[](std::size_t bytes, const std::nothrow_t&) noexcept {
  return std::malloc(bytes);
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }

// The slot of an abstract class's methods; no object of one is ever called.
extern "C" void __cxa_pure_virtual() { __builtin_trap(); }  // NOLINT(bugprone-reserved-identifier)
