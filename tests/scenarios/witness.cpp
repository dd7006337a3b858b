#include "scenarios/witness.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <iterator>

#include "base/bytes.h"
#include "sim/firmware/protocol_check.h"
#include "sim/wire/messages.h"
#include "sim/wire/wire.h"
#include "support/log_text.h"

namespace fs = std::filesystem;

namespace scenarios {
void Digest::Add(const void* bytes, std::size_t count) {
  const auto* from = static_cast<const std::uint8_t*>(bytes);
  for (std::size_t i = 0; i < count; ++i) value_ = (value_ ^ from[i]) * 0x100000001B3u;
}

std::string Digest::Text() const {
  char text[9];
  std::snprintf(text, sizeof text, "%08x", static_cast<unsigned>(value_ ^ (value_ >> 32)));
  return text;
}

Witness::Witness(qrn::UsbPort& port, const qrn::sim::SimOptions& options)
    : VirtualTime{{port, options}}, ForwardingPlatform(time), startMs_(time.TickMs()) {}

void Witness::Say(const std::string& text) {
  Look();
  events_.push_back({Event::kSaid, NowMs(), text});
}

std::vector<Event> Witness::TakeEvents() {
  Look();
  return std::exchange(events_, {});
}

bool Witness::BulkWrite(qrn::DeviceHandle device, const void* data, std::uint32_t bytes) {
  Look();
  if (!time.BulkWrite(device, data, bytes)) return false;
  const auto* frame = static_cast<const std::uint8_t*>(data);
  if (qrn::sim::IsCommandWrite(frame, bytes)) {
    const auto* packet = frame + qrn::sim::kFramePayloadAt;
    const bool isTest = qrn::sim::IsAnswerTest({packet, packet + qrn::sim::kCommandBytes});
    ++traffic_.messages[isTest ? 0 : qrn::U32(packet)];
  }
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
  const std::vector<fs::path> files = LogFolder::Files();
  if (files.empty() || file_ == files.back()) return;
  file_ = files.back();
  read_ = 0;
  events_.push_back({Event::kLogBegins, NowMs(), file_.filename().string()});
  ReadOn();
}

void Witness::ReadOn() {
  std::error_code absent;
  if (file_.empty() || fs::file_size(file_, absent) == read_) return;
  std::ifstream file(file_, std::ios::binary);
  file.seekg(static_cast<std::streamoff>(read_));
  const std::string bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  if (bytes.empty()) return;
  read_ += bytes.size();
  for (const char c : CodePageToUtf8(bytes)) {
    if (c == '\n') {
      if (!line_.empty()) events_.push_back({Event::kLog, NowMs(), std::move(line_)});
      line_.clear();
    } else if (c != '\r') {
      line_ += c;
    }
  }
}

}  // namespace scenarios
