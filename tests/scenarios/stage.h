// Where a scenario is played: as long as it lives, the library prints on its printer, on virtual
// time.
#ifndef QRN_TESTS_SCENARIOS_STAGE_H_
#define QRN_TESTS_SCENARIOS_STAGE_H_

#include "platform/platform.h"
#include "scenarios/host.h"
#include "scenarios/scenario.h"
#include "scenarios/witness.h"
#include "sim/virtual_printer.h"

namespace scenarios {

struct Stage {
  explicit Stage(const Scenario& scenario)
      : folder(scenario.logFolder),
        printer(scenario.machine, scenario.quirks),
        witness(printer, scenario.system),
        host([this](const std::string& what) { witness.Say(what); }) {
    qrn::UsePlatform(&witness);
  }
  ~Stage() { qrn::UsePlatform(nullptr); }
  Stage(const Stage&) = delete;
  Stage& operator=(const Stage&) = delete;

  LogFolder folder;
  qrn::sim::VirtualPrinter printer;
  Witness witness;
  Host host;
};

}  // namespace scenarios

#endif  // QRN_TESTS_SCENARIOS_STAGE_H_
