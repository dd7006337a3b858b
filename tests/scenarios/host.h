// The host program: takes the steps of a job through the exports and says what it finds unusual.
#ifndef QRN_TESTS_SCENARIOS_HOST_H_
#define QRN_TESTS_SCENARIOS_HOST_H_

#include <cstdint>
#include <string>
#include <vector>

#include "scenarios/page.h"
#include "scenarios/scenario.h"
#include "scenarios/witness.h"

namespace scenarios {

class Host {
 public:
  explicit Host(Witness& witness) : witness_(witness) {}

  // Takes all steps of the job; what a driver should have printed then.
  Page Print(const Job& job);

 private:
  struct Line {
    const std::uint8_t* bytes;
    std::uint32_t count;
  };

  void Take(const HostStep& step, const Job& job);
  void Start(const Job& job);
  void End(const Job& job);
  void Ask();
  void GiveLines(const HostStep& step, const Job& job);
  void Send(std::uint32_t color, const HostStep& step);
  void Write(const HostStep& step);
  Line LineOf(std::uint32_t plane, const HostStep& step);
  // How many lines were refused since it was said last.
  void SayRefused();

  Witness& witness_;
  const Page* drawn_ = nullptr;
  Intake* intake_ = nullptr;
  std::uint32_t next_ = 0;  // line of the page to be handed over
  std::uint32_t slot_ = 0;  // of the next WriteRipData; starts anew with StartPrint only
  std::uint32_t calls_ = 0, refused_ = 0;
  std::vector<std::uint8_t> scratch_;
};

}  // namespace scenarios

#endif  // QRN_TESTS_SCENARIOS_HOST_H_
