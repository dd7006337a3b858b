#include "sim/session.h"

#include "platform/platform.h"
#include "platform/posix/posix_platform.h"
#include "sim/sim_platform.h"

namespace qrn::sim {

struct Session::Impl {
  SessionOptions options;
  std::unique_ptr<SimPlatform> virtualTime;  // null: real time

  static void OnPosixBox(void* context, const char* text, const char*) {
    const auto& onBox = static_cast<Impl*>(context)->options.onBox;
    if (onBox) onBox(text);
  }
};

Session::Session(VirtualPrinter& printer, SessionOptions options)
    : impl_(std::make_unique<Impl>(Impl{std::move(options), nullptr})) {
  if (impl_->options.virtualTime) {
    SimOptions sim;
    sim.seed = impl_->options.seed;
    sim.limitMs = impl_->options.limitMs;
    sim.onBox = impl_->options.onBox;
    impl_->virtualTime = std::make_unique<SimPlatform>(printer, std::move(sim));
    UsePlatform(impl_->virtualTime.get());
  } else {
    ThePosixPlatform().Plug(&printer);
    ThePosixPlatform().HandleBoxes(Impl::OnPosixBox, impl_.get());
    UsePlatform(&ThePosixPlatform());
  }
}

Session::~Session() {
  UsePlatform(nullptr);
  ThePosixPlatform().Plug(nullptr);
  ThePosixPlatform().HandleBoxes(nullptr, nullptr);
}

std::uint32_t Session::TickMs() const { return ThePlatform().TickMs(); }

}  // namespace qrn::sim
