// The host program of the simulation: draws the planned image, hands it over with the planned
// mistakes, and keeps what should come of it.
#ifndef QRN_TESTS_JOBS_SIM_HOST_H_
#define QRN_TESTS_JOBS_SIM_HOST_H_

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "jobs/sim_plan.h"
#include "jobs/sim_world.h"
#include "sim/compare.h"

// A page: every plane of every line, whole strides.
class Page : public qrn::sim::RasterSource {
 public:
  Page(std::uint32_t lines, std::uint32_t lineBytes) : lines_(lines), lineBytes_(lineBytes) {}
  std::uint32_t Lines() const override { return lines_; }
  std::uint32_t LineBytes() const override { return lineBytes_; }
  const std::uint8_t* Line(int plane, std::uint32_t line) const override;
  // To write on; a plane without any is blank.
  std::uint8_t* Edit(std::uint32_t plane, std::uint32_t line);

 private:
  std::uint32_t lines_, lineBytes_;
  std::array<std::vector<std::uint8_t>, 8> planes_;
};

Page DrawPage(const SimPlan& plan);

// What the host saw.
struct HostReport {
  int startResult = 0;  // of PP_Init; 1 in the stream family
  std::uint32_t endCalls = 0;
  std::uint32_t linesTaken = 0;   // whole lines, had the job never stopped
  std::uint32_t linesBehind = 0;  // calls behind the last line
  std::uint32_t badLines = 0;     // calls that no job can use, in front of the last line
  std::string fault;              // first call with a wrong result; "" = none
};

class SimHost {
 public:
  SimHost(const SimPlan& plan, SimWorld& world, bool lineApi);

  // Prints the image with the plan's mistakes, into `page` what a job should make of it.
  HostReport PrintAsPlanned(const Page& image, Page* page);
  // Prints a page as a host should.
  HostReport PrintClean(const Page& page);

 private:
  void CallBefore();
  void Start(bool bad);
  void End();
  void GiveLines(const Page& image);
  void GiveLine(const Page& image, std::uint32_t line);
  void GiveBehind();
  void GivePlane(std::uint32_t plane, const std::uint8_t* bytes, std::uint32_t count);
  void Send(std::uint32_t color, const std::uint8_t* bytes, std::uint32_t count);
  void Take(std::uint32_t plane, const std::uint8_t* bytes, std::uint32_t count);
  void Blame(bool right, const char* call);

  const SimPlan& plan_;
  SimWorld& world_;
  bool lineApi_;
  SeedStream random_;
  std::vector<std::uint8_t> scratch_;
  std::vector<std::uint8_t> blank_;
  HostReport report_;
  Page* page_ = nullptr;
  std::uint32_t slot_ = 0;  // of the stream's next line
};

#endif  // QRN_TESTS_JOBS_SIM_HOST_H_
