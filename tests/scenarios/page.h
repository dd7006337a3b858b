// The page of a job, as the host draws it, and as a driver should make it of the calls that come.
#ifndef QRN_TESTS_SCENARIOS_PAGE_H_
#define QRN_TESTS_SCENARIOS_PAGE_H_

#include <cstdint>
#include <vector>

#include "scenarios/scenario.h"
#include "sim/compare.h"

namespace scenarios {

constexpr std::uint32_t kPlanes = 8;

class Page : public qrn::sim::RasterSource {
 public:
  Page(std::uint32_t width, std::uint32_t lines);
  static Page Drawn(const Job& job);

  std::uint32_t Lines() const override { return lines_; }
  std::uint32_t LineBytes() const override { return lineBytes_; }
  const std::uint8_t* Line(int plane, std::uint32_t line) const override;
  // To write on.
  std::uint8_t* Edit(std::uint32_t plane, std::uint32_t line);

 private:
  std::uint32_t lines_, lineBytes_;
  std::vector<std::uint8_t> bytes_;  // plane by plane
};

// Line intake: the page that a job is handed, its mistakes included.
class Intake {
 public:
  explicit Intake(const Job& job) : page_(job.width, job.height) {}

  // Bytes for a plane of the next line; null for no line at all.
  void Take(std::uint32_t plane, const std::uint8_t* bytes, std::uint32_t count);
  std::uint32_t LinesTaken() const { return linesTaken_; }
  const Page& Taken() const { return page_; }

 private:
  Page page_;
  std::uint32_t linesTaken_ = 0;
};

}  // namespace scenarios

#endif  // QRN_TESTS_SCENARIOS_PAGE_H_
