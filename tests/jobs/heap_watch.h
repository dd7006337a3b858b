// Counts what the library takes from the heap and gives back. A program that links this has its
// global new and delete replaced; only calls made inside a LibraryScope count. The log's files are
// the C library's and do not count.
#ifndef QRN_TESTS_JOBS_HEAP_WATCH_H_
#define QRN_TESTS_JOBS_HEAP_WATCH_H_

#include <cstdint>

struct LibraryHeap {
  std::uint64_t taken = 0, givenBack = 0;
  std::uint64_t takenOutsideStart = 0;  // while the host was in no start call
};
LibraryHeap TheLibraryHeap();

// While one lives, the calling thread runs code of the library, or, inside one, of its surroundings
// again.
class LibraryScope {
 public:
  explicit LibraryScope(bool inLibrary);
  ~LibraryScope();
  LibraryScope(const LibraryScope&) = delete;
  LibraryScope& operator=(const LibraryScope&) = delete;

 private:
  bool before_;
};

// A call of the library, and a call that the library makes.
template <class Call>
auto InLibrary(Call call) {
  const LibraryScope inside(true);
  return call();
}
template <class Call>
auto OutsideLibrary(Call call) {
  const LibraryScope outside(false);
  return call();
}

// The host enters or leaves a start call. Host's thread.
void SetStarting(bool starting);

#endif  // QRN_TESTS_JOBS_HEAP_WATCH_H_
