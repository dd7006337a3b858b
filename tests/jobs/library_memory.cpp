#include "jobs/library_memory.h"

#include <new>

namespace {

// One thread runs at a time.
LibraryMemory g_memory;

}  // namespace

LibraryMemory TheLibraryMemory() { return g_memory; }

void* operator new[](std::size_t bytes, const std::nothrow_t&) noexcept {
  void* block = ::operator new(bytes, std::nothrow);
  g_memory.held += block != nullptr ? 1 : 0;
  ++g_memory.obtained;
  g_memory.inJobs += JobRuns() ? 1 : 0;
  return block;
}

// What other arrays need goes the same way.
void* operator new[](std::size_t bytes) {
  ++g_memory.held;
  return ::operator new(bytes);
}
void operator delete[](void* block) noexcept {
  g_memory.held -= block != nullptr ? 1 : 0;
  ::operator delete(block);
}
void operator delete[](void* block, std::size_t) noexcept { ::operator delete[](block); }
