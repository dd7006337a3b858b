#include "jobs/timed_log.h"

#include <fstream>
#include <iterator>

#include "host/job.h"
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
  const qrn::Job& job = qrn::GetJob();
  if (job.bLogOn != 1 || file_ == job.szLogFile) return;
  file_ = job.szLogFile;
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
