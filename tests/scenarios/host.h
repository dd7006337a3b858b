// The host program: takes the steps of a job through the exports, says what it finds unusual, and
// keeps what a driver should make of the lines.
#ifndef QRN_TESTS_SCENARIOS_HOST_H_
#define QRN_TESTS_SCENARIOS_HOST_H_

#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "scenarios/scenario.h"
#include "sim/proof/raster_source.h"

namespace scenarios {

class Page : public qrn::sim::RasterSource {
 public:
  explicit Page(const Job& job);
  // With the job's image.
  static Page Drawn(const Job& job);

  std::uint32_t Lines() const override { return lines_; }
  std::uint32_t LineBytes() const override { return lineBytes_; }
  const std::uint8_t* Line(int color, std::uint32_t line) const override;
  // To write on.
  std::uint8_t* Edit(std::uint32_t color, std::uint32_t line);

 private:
  std::uint32_t lines_, lineBytes_;
  std::vector<std::uint8_t> bytes_;  // color by color
};

class Host {
 public:
  using Say = std::function<void(const std::string& what)>;
  explicit Host(Say say) : say_(std::move(say)) {}

  // Takes all steps of the job; the page that a driver should have printed then.
  Page Print(const Job& job) { return Print(job, Page::Drawn(job)); }
  // With another page than the job's image.
  Page Print(const Job& job, Page drawn);
  // Lines of that page that were handed over whole, as far as a driver can tell.
  std::uint32_t LinesTaken() const { return linesTaken_; }

 private:
  void Take(const HostStep& step);
  void Start();
  void Ask();
  void GiveLines(const HostStep& step);
  void Send(std::uint32_t color, const HostStep& step);
  void Write(const HostStep& step);
  void SayRefused();
  std::vector<std::uint8_t> LineOf(std::uint32_t color, const HostStep& step) const;
  // What a driver makes of a line.
  void TakeIn(std::uint32_t color, const std::vector<std::uint8_t>& line, const HostStep& step);

  Say say_;
  std::uint32_t slot_ = 0;  // of the next WriteRipData; only StartPrint sets it back
  // Of the job in hand.
  Job job_;
  Page drawn_{job_}, taken_{job_};
  std::uint32_t linesGiven_ = 0, linesTaken_ = 0;
  std::uint32_t calls_ = 0, refused_ = 0;  // since it was said last how many
};

}  // namespace scenarios

#endif  // QRN_TESTS_SCENARIOS_HOST_H_
