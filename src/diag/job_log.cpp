#include "diag/job_log.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "diag/code_page.h"
#include "platform/platform.h"

namespace qrn {
namespace {

constexpr std::size_t kLineBytes = 512;  // message, line feed, terminating zero
constexpr std::size_t kMessageBytes = kLineBytes - 1;
constexpr std::size_t kPathBytes = sizeof(Job::szLogFile);

// Text mode written out, so that the file is the same on every platform: each line feed goes out as
// CR LF.
void WriteLine(std::FILE* file, const char* message) {
  char bytes[2 * kLineBytes];
  std::size_t count = 0;
  const auto put = [&bytes, &count](char c) {
    if (c == '\n') bytes[count++] = '\r';
    bytes[count++] = c;
  };
  for (; *message != '\0'; ++message) put(*message);
  put('\n');
  (void)std::fwrite(bytes, 1, count,
                    file);  // a log that cannot be written must not disturb the job
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
  std::FILE* file = std::fopen(job.szLogFile, "wb");
  if (file == nullptr) return;
  job.bLogOn = 1;
  std::fclose(file);
}

void LogPrint(const char* format, ...) {
  const Job& job = GetJob();
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
  std::FILE* file = std::fopen(job.szLogFile, "ab");
  if (file == nullptr) return;
  WriteLine(file, message);
  std::fclose(file);
}

}  // namespace qrn
