// Prints pages on a virtual printer, each as a job of its own, and finds out what came of it.
#ifndef QRN_TOOLS_PRINT_PAGE_PAGE_PRINTER_H_
#define QRN_TOOLS_PRINT_PAGE_PAGE_PRINTER_H_

#include <atomic>
#include <cstdint>
#include <string>

#include "print_page/console.h"
#include "print_page/options.h"
#include "print_page/page.h"
#include "print_page/summary.h"
#include "sim/machine/machine.h"
#include "sim/session.h"
#include "sim/virtual_printer.h"

namespace qrn::tool {

class PagePrinter {
 public:
  // Both outlive the printer.
  PagePrinter(const Options& options, const sim::Machine& machine);

  // Prints a page, compares it and makes its picture, as the options say. `pageNo` counts from 1.
  PageReport Print(const RasterPage& raster, std::uint32_t pageNo, Progress& progress);
  // What keeps the printer from printing now; "" when nothing does. Any thread.
  std::string Hindrance() const;

 private:
  void HandOver(const RasterPage& raster, const SlotPage& page, Progress& progress,
                PageReport* report);
  void LookAtPaper(const RasterPage& raster, const SlotPage& page, PageReport* report);
  std::string CauseOf(const sim::PrinterStats& stats) const;
  void MeasureInk(const RasterPage& raster, const SlotPage& page, PageReport* report) const;
  void MakePicture(const SlotPage& page, PageReport* report) const;

  const Options& options_;
  const sim::Machine& machine_;
  sim::VirtualPrinter printer_;
  sim::Session session_;
  std::atomic<std::uint32_t> jobsBefore_ = 0;  // created before the one of this page
};

}  // namespace qrn::tool

#endif  // QRN_TOOLS_PRINT_PAGE_PAGE_PRINTER_H_
