// What the process holds of its system: what a job leaves behind shows here.
#ifndef QRN_TESTS_JOBS_HOLDINGS_H_
#define QRN_TESTS_JOBS_HOLDINGS_H_

#include <cstddef>

// Counted at construction; call it before the first job.
class Holdings {
 public:
  Holdings();
  // Fails the current test when the process does not hold the same now, or within a moment.
  void ExpectTheSame() const;

 private:
  std::size_t threads_;
  std::size_t handles_;  // open files and the like
};

#endif  // QRN_TESTS_JOBS_HOLDINGS_H_
