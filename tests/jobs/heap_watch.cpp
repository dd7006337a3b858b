#include "jobs/heap_watch.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

thread_local bool t_inLibrary = false;
std::atomic<bool> g_starting{false};
std::atomic<std::uint64_t> g_taken{0}, g_givenBack{0}, g_takenOutsideStart{0};

void* Take(std::size_t bytes) noexcept {
  if (t_inLibrary) {
    ++g_taken;
    if (!g_starting) ++g_takenOutsideStart;
  }
  return std::malloc(bytes != 0 ? bytes : 1);
}

void* TakeOrThrow(std::size_t bytes) {
  void* block = Take(bytes);
  if (block == nullptr) throw std::bad_alloc();
  return block;
}

void GiveBack(void* block) noexcept {
  if (t_inLibrary && block != nullptr) ++g_givenBack;
  std::free(block);
}

}  // namespace

LibraryHeap TheLibraryHeap() { return {g_taken, g_givenBack, g_takenOutsideStart}; }

LibraryScope::LibraryScope(bool inLibrary) : before_(t_inLibrary) { t_inLibrary = inLibrary; }
LibraryScope::~LibraryScope() { t_inLibrary = before_; }

void SetStarting(bool starting) { g_starting = starting; }

void* operator new(std::size_t bytes) { return TakeOrThrow(bytes); }
void* operator new[](std::size_t bytes) { return TakeOrThrow(bytes); }
void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept { return Take(bytes); }
void* operator new[](std::size_t bytes, const std::nothrow_t&) noexcept { return Take(bytes); }
void operator delete(void* block) noexcept { GiveBack(block); }
void operator delete[](void* block) noexcept { GiveBack(block); }
void operator delete(void* block, std::size_t) noexcept { GiveBack(block); }
void operator delete[](void* block, std::size_t) noexcept { GiveBack(block); }
void operator delete(void* block, const std::nothrow_t&) noexcept { GiveBack(block); }
void operator delete[](void* block, const std::nothrow_t&) noexcept { GiveBack(block); }
