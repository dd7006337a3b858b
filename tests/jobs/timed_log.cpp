#include "jobs/timed_log.h"

#include <fstream>
#include <iterator>

#include "jobs/log_folder.h"
#include "support/log_text.h"

qrn::ThreadHandle TimedPlatform::ThreadStart(void (*procedure)(void*), void* argument) {
  started_.push_back({this, procedure, argument});
  return inner.ThreadStart(
      [](void* started) {
        const auto* self = static_cast<Started*>(started);
        self->procedure(self->argument);
        self->self->Note();
      },
      &started_.back());
}

void TimedPlatform::Note() {
  ReadOn();  // the rest of the log of the job before, when a new one has begun
  const std::vector<std::filesystem::path> files = LogFolder::Files();
  if (files.empty() || file_ == files.back()) return;
  file_ = files.back();
  read_ = 0;
  ReadOn();
}

void TimedPlatform::ReadOn() {
  std::ifstream file(file_, std::ios::binary);
  file.seekg(static_cast<std::streamoff>(read_));
  const std::string bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  if (bytes.empty()) return;
  read_ += bytes.size();
  std::string line;
  for (const char c : CodePageToUtf8(bytes)) {
    if (c == '\r') continue;
    if (c != '\n') {
      line += c;
    } else if (!line.empty()) {
      lines_.push_back({inner.TickMs() - startMs_, std::move(line)});
      line.clear();
    }
  }
}
