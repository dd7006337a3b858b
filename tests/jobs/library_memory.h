// The blocks that the library has obtained. It asks for arrays that may be refused, and for nothing
// else (AllocatesNothing.Else holds its objects against that); the rest of a test program never
// does.
#ifndef QRN_TESTS_JOBS_LIBRARY_MEMORY_H_
#define QRN_TESTS_JOBS_LIBRARY_MEMORY_H_

#include <cstddef>

struct LibraryMemory {
  std::size_t obtained = 0;
  std::size_t inJobs = 0;  // of these, while JobRuns() said so
  std::size_t held = 0;
};
LibraryMemory TheLibraryMemory();

// Defined by the program: whether the printer has a job that the library printed last.
bool JobRuns();

#endif  // QRN_TESTS_JOBS_LIBRARY_MEMORY_H_
