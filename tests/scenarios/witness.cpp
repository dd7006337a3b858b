#include "scenarios/witness.h"

#include <algorithm>
#include <fstream>
#include <iterator>

#include "platform/bytes.h"
#include "scenarios/log_folder.h"
#include "sim/wire.h"
#include "support/log_text.h"

namespace scenarios {

Witness::Witness(qrn::UsbPort& port, const qrn::sim::SimOptions& options)
    : VirtualTime{{port, options}}, ForwardingPlatform(time), startMs_(time.TickMs()) {}

void Witness::Say(const std::string& text) {
  Look();
  events_.push_back({NowMs(), text, false});
}

const std::vector<Event>& Witness::Events() {
  Look();
  return events_;
}

bool Witness::BulkWrite(qrn::DeviceHandle device, const void* data, std::uint32_t bytes) {
  Look();
  if (!time.BulkWrite(device, data, bytes)) return false;
  const auto* frame = static_cast<const std::uint8_t*>(data);
  if (qrn::sim::IsCommandWrite(frame, bytes))
    ++traffic_.messages[qrn::U32(frame + qrn::sim::kFramePayloadAt)];
  ++traffic_.writes;
  traffic_.bytes += bytes;
  traffic_.digest.Add(data, bytes);
  return true;
}

bool Witness::BulkRead(qrn::DeviceHandle device, void* data, std::uint32_t bytes) {
  Look();
  return time.BulkRead(device, data, bytes);
}

void Witness::SleepMs(std::uint32_t ms) {
  Look();
  time.SleepMs(ms);
}

qrn::ThreadHandle Witness::ThreadStart(void (*procedure)(void*), void* argument) {
  started_.push_back({this, procedure, argument});
  return time.ThreadStart(
      [](void* started) {
        const auto* thread = static_cast<Started*>(started);
        thread->procedure(thread->argument);
        thread->self->Look();
      },
      &started_.back());
}

void Witness::ThreadTerminate(qrn::ThreadHandle thread) {
  Look();
  time.ThreadTerminate(thread);
}

void Witness::ThreadRelease(qrn::ThreadHandle thread) {
  Look();
  time.ThreadRelease(thread);
}

void Witness::ShowBox(const char* text, const char* caption) {
  std::string line = CodePageToUtf8(text);
  std::erase(line, '\r');
  std::replace(line.begin(), line.end(), '\n', '|');
  Say("box " + CodePageToUtf8(caption) + ": " + line);
  time.ShowBox(text, caption);
}

void Witness::Look() {
  ReadOn();  // the rest of the log of the job before, when a new one has begun
  const std::vector<std::filesystem::path> files = LogFolder::Files();
  if (files.empty() || file_ == files.back()) return;
  file_ = files.back();
  read_ = 0;
  ReadOn();
}

void Witness::ReadOn() {
  std::ifstream file(file_, std::ios::binary);
  file.seekg(static_cast<std::streamoff>(read_));
  const std::string bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  if (bytes.empty()) return;
  read_ += bytes.size();
  for (const char c : CodePageToUtf8(bytes)) {
    if (c == '\n') {
      if (!line_.empty()) events_.push_back({NowMs(), std::move(line_), true});
      line_.clear();
    } else if (c != '\r') {
      line_ += c;
    }
  }
}

}  // namespace scenarios
