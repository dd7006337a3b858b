#include "diag/job_log.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "base/shared.h"
#include "diag/code_page.h"
#include "platform/platform.h"

namespace qrn {
namespace {

constexpr std::size_t kLineBytes = 512;  // message, line feed, terminating zero
constexpr std::size_t kMessageBytes = kLineBytes - 1;
constexpr std::size_t kPathBytes = sizeof(Job::szLogFile);

constexpr std::uint32_t kFileLineBytes = 2 * kLineBytes;  // at most, each character a line feed
constexpr int kAttempts = 3;

// Does what text mode does, so that the file is the same on every platform: each line feed becomes
// CR LF. Returns the number of bytes.
std::uint32_t EncodeLine(const char* message, char (&bytes)[kFileLineBytes]) {
  std::uint32_t count = 0;
  const auto put = [&bytes, &count](char c) {
    if (c == '\n') bytes[count++] = '\r';
    bytes[count++] = c;
  };
  for (; *message != '\0'; ++message) put(*message);
  put('\n');
  return count;
}

// The entry of this thread's line among those that are under way; null when all are taken.
LogLine* ClaimEntry(Job& job) {
  for (LogLine& entry : job.logLines) {
    if (ExchangeShared(entry.state, kLogLineNone, kLogLineClaimed)) return &entry;
  }
  return nullptr;
}

// How large a gap before this place another thread may leave with a line that is not written yet.
std::uint32_t GapBefore(std::uint32_t place, Job& job, const LogLine* own) {
  std::uint32_t gap = 0;
  for (LogLine& entry : job.logLines) {
    if (&entry == own) continue;
    const std::uint8_t state = LoadShared(entry.state);
    if (state == kLogLineClaimed) gap = kFileLineBytes;  // it may have any place
    const std::uint32_t other = LoadShared(entry.place);
    if (state == kLogLinePlaced && other < place) gap = place - other;
  }
  return gap;
}

// Gives the line its place after all others by one atomic step and writes it there, so that two
// threads need no lock. A file that ends where it should not was cut or removed by somebody, and
// goes on from its end.
void WriteAtItsPlace(Job& job, LogLine& entry, const char* bytes, std::uint32_t count) {
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    StoreShared(entry.state, kLogLineClaimed);
    const std::uint32_t place = AddShared(job.logBytes, count);
    StoreShared(entry.place, place);
    StoreShared(entry.bytes, count);
    StoreShared(entry.state, kLogLinePlaced);
    const std::uint32_t gapMax = GapBefore(place, job, &entry);
    std::uint32_t fileBytes = 0;
    FileWrite written = FileWrite::kFailed;
    // A write that fails must not disturb the job. Where the other thread's line comes after this
    // place, the write is tried again, so that no hole is left.
    for (int write = 0; write < kAttempts && written == FileWrite::kFailed; ++write) {
      written = ThePlatform().FileWriteAt(job.szLogFile, {place, bytes, count}, gapMax, &fileBytes);
      if (written == FileWrite::kFailed && ExchangeShared(job.logBytes, place + count, place))
        return;
    }
    if (written != FileWrite::kShort) return;
    // The log goes on from the file's end, unless the other thread has moved it there already.
    const std::uint32_t next = LoadShared(job.logBytes);
    if (next >= place + count) (void)ExchangeShared(job.logBytes, next, fileBytes);
  }
}

}  // namespace

void LogOpen(Job& job, const char* directory) {
  const LocalTime now = ThePlatform().LocalTimeNow();
  char stem[kPathBytes];
  std::snprintf(stem, sizeof stem, "%s/Y%d%02d%02d_%02d%02d", directory, now.year, now.month,
                now.day, now.hour, now.minute);
  job.bLogOn = 0;
  for (std::uint32_t n = 0;; ++n) {
    const int length = n == 0 ? std::snprintf(job.szLogFile, kPathBytes, "%s.txt", stem)
                              : std::snprintf(job.szLogFile, kPathBytes, "%s(%u).txt", stem, n);
    // A directory too deep for the field would never give a free name.
    if (length < 0 || static_cast<std::size_t>(length) >= kPathBytes) return;
    if (!ThePlatform().PathExists(job.szLogFile)) break;
  }
  if (ThePlatform().FileCreate(job.szLogFile)) job.bLogOn = 1;
}

void LogPrint(const char* format, ...) {
  Job& job = GetJob();
  if (job.bLogOn != 1) return;
  // The format is converted before its values go in: text values are in the code page already. No
  // byte of a two-byte character is '%', so the directives survive.
  char codePageFormat[kLineBytes];
  ToCodePage(format, codePageFormat, sizeof codePageFormat);
  char message[kMessageBytes];
  std::va_list values;
  va_start(values, format);
  std::vsnprintf(message, sizeof message, codePageFormat, values);
  va_end(values);
  char bytes[kFileLineBytes];
  const std::uint32_t count = EncodeLine(message, bytes);
  LogLine* entry = ClaimEntry(job);
  if (entry == nullptr) return;  // two threads at most are at work
  WriteAtItsPlace(job, *entry, bytes, count);
  StoreShared(entry->state, kLogLineNone);
}

void LogDropUnwritten(Job& job) {
  char blanks[kFileLineBytes];
  std::memset(blanks, ' ', sizeof blanks);
  for (LogLine& entry : job.logLines) {
    if (LoadShared(entry.state) == kLogLinePlaced && job.bLogOn == 1) {
      const FilePart line{LoadShared(entry.place), blanks, LoadShared(entry.bytes)};
      std::uint32_t fileBytes = 0;
      (void)ThePlatform().FileWriteAt(job.szLogFile, line, 0, &fileBytes);
    }
    StoreShared(entry.state, kLogLineNone);
  }
}

}  // namespace qrn
