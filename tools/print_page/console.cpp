#include "print_page/console.h"

#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdio>

namespace qrn::tool {
namespace {

constexpr std::size_t kColumns = 39, kBarMin = 5, kBarMax = 20;
constexpr std::chrono::milliseconds kPeriod(200);
constexpr const char* kErase = "\r\033[K";

std::atomic<bool> g_drawn = false;  // the progress line is on the screen

void Erase() {
  if (g_drawn.exchange(false)) std::fputs(kErase, stderr);
}

}  // namespace

void Complain(const std::string& text) {
  Erase();
  std::fprintf(stderr, "print-page: %s\n", text.c_str());
}

std::string ProgressText(const PageProgress& progress) {
  std::string text = "page " + std::to_string(progress.page);
  if (progress.pages != 0) text += "/" + std::to_string(progress.pages);
  text += ": " + progress.doing;
  if (progress.whole == 0)
    return (text + ", " + std::to_string(progress.seconds) + " s").substr(0, kColumns);
  const std::uint64_t percent = std::uint64_t{100} * progress.done / progress.whole;
  text += " " + std::to_string(percent) + " %";
  const std::size_t frame = std::string(" []").size();
  if (text.size() + frame + kBarMin > kColumns) return text.substr(0, kColumns);
  const std::size_t cells = std::min(kBarMax, kColumns - frame - text.size());
  std::string bar(cells * percent / 100, '#');
  bar.resize(cells, '.');
  return text + " [" + bar + "]";
}

Progress::Progress(std::function<std::string()> hindrance) : hindrance_(std::move(hindrance)) {
  if (isatty(STDERR_FILENO) == 1) thread_ = std::thread([this] { Run(); });
}

Progress::~Progress() {
  Hide();
  {
    const std::lock_guard lock(mutex_);
    over_ = true;
  }
  changed_.notify_all();
  if (thread_.joinable()) thread_.join();
}

void Progress::BeginReading(std::uint32_t page, std::uint32_t pages, const std::string& doing) {
  const std::lock_guard lock(mutex_);
  if (page != now_.page) begun_ = std::chrono::steady_clock::now();
  now_ = {page, pages, doing};
  shown_ = true;
}

void Progress::BeginPrinting(std::uint32_t lines) {
  const std::lock_guard lock(mutex_);
  now_.doing = "printing";
  now_.whole = lines;
  shown_ = true;
}

void Progress::Printed(std::uint32_t lines) {
  const std::lock_guard lock(mutex_);
  now_.done = lines;
}

void Progress::Hide() {
  const std::lock_guard lock(mutex_);
  shown_ = false;
  Erase();
}

void Progress::Run() {
  std::unique_lock lock(mutex_);
  while (!over_) {
    if (shown_) Draw();
    changed_.wait_for(lock, kPeriod);
  }
}

void Progress::Draw() {
  PageProgress progress = now_;
  const auto since = std::chrono::steady_clock::now() - begun_;
  progress.seconds =
      static_cast<std::uint32_t>(std::chrono::duration_cast<std::chrono::seconds>(since).count());
  const std::string hindrance = progress.whole != 0 ? hindrance_() : "";
  if (!hindrance.empty()) progress.doing = hindrance + " at";
  g_drawn = true;
  std::fprintf(stderr, "%s%s", kErase, ProgressText(progress).c_str());
}

}  // namespace qrn::tool
