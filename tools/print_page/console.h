// What is said on standard error: lines that stay and, on a terminal, one that shows how far a page
// has got.
#ifndef QRN_TOOLS_PRINT_PAGE_CONSOLE_H_
#define QRN_TOOLS_PRINT_PAGE_CONSOLE_H_

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

namespace qrn::tool {

// A line that stays. Any thread.
void Complain(const std::string& text);

struct PageProgress {
  std::uint32_t page = 1, pages = 0;  // pages 0 = not known
  std::string doing;                  // such as "printing"
  std::uint32_t done = 0, whole = 0;  // lines; whole 0 = not known
  std::uint32_t seconds = 0;          // since the page began
};

// At most 39 columns, so that a terminal of 40 does not wrap it.
std::string ProgressText(const PageProgress& progress);

// Redraws one line on the terminal, on a thread of its own; nothing where standard error is none.
class Progress {
 public:
  // `hindrance`: what keeps the printer from printing now, "" when nothing does. Called on the
  // thread while a page is printed.
  explicit Progress(std::function<std::string()> hindrance);
  ~Progress();

  void BeginReading(std::uint32_t page, std::uint32_t pages, const std::string& doing);
  void BeginPrinting(std::uint32_t lines);
  void Printed(std::uint32_t lines);
  void Hide();  // until the next begin

 private:
  void Run();
  void Draw();

  std::function<std::string()> hindrance_;
  std::mutex mutex_;
  std::condition_variable changed_;
  bool shown_ = false, over_ = false;
  PageProgress now_;
  std::chrono::steady_clock::time_point begun_ = std::chrono::steady_clock::now();  // the page
  std::thread thread_;  // not running where there is no terminal
};

}  // namespace qrn::tool

#endif  // QRN_TOOLS_PRINT_PAGE_CONSOLE_H_
