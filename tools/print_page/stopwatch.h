// Seconds of the steps of a run.
#ifndef QRN_TOOLS_PRINT_PAGE_STOPWATCH_H_
#define QRN_TOOLS_PRINT_PAGE_STOPWATCH_H_

#include <chrono>

namespace qrn::tool {

class Stopwatch {
 public:
  // Since construction or the last lap.
  double Lap() {
    const auto now = std::chrono::steady_clock::now();
    const std::chrono::duration<double> seconds = now - since_;
    since_ = now;
    return seconds.count();
  }

 private:
  std::chrono::steady_clock::time_point since_ = std::chrono::steady_clock::now();
};

}  // namespace qrn::tool

#endif  // QRN_TOOLS_PRINT_PAGE_STOPWATCH_H_
