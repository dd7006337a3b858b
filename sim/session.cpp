#include "sim/session.h"

#include "platform/platform.h"
#include "sim/time/real_time.h"
#include "sim/time/sim_platform.h"

namespace qrn::sim {

struct Session::Impl {
  std::unique_ptr<SimPlatform> virtualTime;  // null: real time
};

Session::Session(VirtualPrinter& printer, SessionOptions options)
    : impl_(std::make_unique<Impl>()) {
  if (options.virtualTime) {
    SimOptions sim;
    sim.seed = options.seed;
    sim.limitMs = options.limitMs;
    sim.onBox = std::move(options.onBox);
    impl_->virtualTime = std::make_unique<SimPlatform>(printer, std::move(sim));
    UsePlatform(impl_->virtualTime.get());
  } else {
    PlugIntoRealTime(&printer, std::move(options.onBox));
    UsePlatform(&RealTimePlatform());
  }
}

Session::~Session() {
  UsePlatform(nullptr);
  PlugIntoRealTime(nullptr, nullptr);
}

std::uint32_t Session::TickMs() const { return ThePlatform().TickMs(); }

}  // namespace qrn::sim
