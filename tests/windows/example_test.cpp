// The minimal host, with the DLL and a virtual printer.
#include <gtest/gtest.h>

#include "sim/session.h"
#include "support/log_folder.h"

// main of examples/minimal_host.c.
extern "C" int MinimalHost(void);

namespace {

TEST(MinimalHost, PrintsItsBars) {
  const LogFolder folder;
  qrn::sim::VirtualPrinter printer{qrn::sim::Machine{}};
  qrn::sim::SessionOptions options;
  options.virtualTime = true;
  const qrn::sim::Session session(printer, options);
  EXPECT_EQ(0, MinimalHost());
  EXPECT_EQ("", printer.Violation());
  EXPECT_EQ(1u, printer.Stats().jobsEnded);
  EXPECT_EQ(480u * 360 * 3, printer.Stats().inkLaid);  // each pixel in one plane, at level 3
}

}  // namespace
