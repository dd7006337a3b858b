// The library is a DLL: loaded anew for each scenario, and without a record to look at.
#include "scenarios/play.h"
#include "windows/loaded_dll.h"

namespace scenarios {

Run PlayApart(const Scenario& scenario) {
  RenewDll();
  return Play(scenario);
}

std::vector<std::pair<std::string, std::string>> RecordFields() { return {}; }

}  // namespace scenarios
