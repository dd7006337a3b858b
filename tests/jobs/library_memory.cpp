#include "jobs/library_memory.h"

#include <mutex>
#include <new>
#include <set>

namespace {

std::mutex g_mutex;
std::set<void*> g_held;
LibraryMemory g_memory;

}  // namespace

LibraryMemory TheLibraryMemory() {
  const std::lock_guard<std::mutex> lock(g_mutex);
  g_memory.held = g_held.size();
  return g_memory;
}

void* operator new[](std::size_t bytes, const std::nothrow_t&) noexcept {
  void* block = ::operator new(bytes, std::nothrow);
  if (block == nullptr) return nullptr;
  const std::lock_guard<std::mutex> lock(g_mutex);
  g_held.insert(block);
  ++g_memory.obtained;
  g_memory.inJobs += JobRuns() ? 1 : 0;
  return block;
}

void operator delete[](void* block) noexcept {
  {
    const std::lock_guard<std::mutex> lock(g_mutex);
    g_held.erase(block);
  }
  ::operator delete(block);
}

// What other arrays need goes the same way back.
void* operator new[](std::size_t bytes) { return ::operator new(bytes); }
void operator delete[](void* block, std::size_t) noexcept { ::operator delete[](block); }
