// The DLL's own memory operators. Those of the C++ library would bring its exceptions along: 100 KB
// of code, and a pool that is allocated at loading and never given back. The library neither throws
// nor catches.
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

// Fills the slots of pure virtual methods, which are never called.
extern "C" void __cxa_pure_virtual() { __builtin_trap(); }  // NOLINT(bugprone-reserved-identifier)
