// The job's text log: one file a job in the directory "c:/p2debug", written only when that
// directory exists. Each line is one open-write-close at a place of its own, so the file is
// complete at any moment and no line is lost to another thread's. Bytes are those of code page 936
// with CR LF ends, on every platform. LogPrint may be called from both threads; it takes no lock.
#ifndef QRN_DIAG_JOB_LOG_H_
#define QRN_DIAG_JOB_LOG_H_

#include "job/job.h"

#if defined(__GNUC__)
#define QRN_PRINTF_CHECKED(text, values) __attribute__((format(printf, text, values)))
#else
#define QRN_PRINTF_CHECKED(text, values)
#endif

namespace qrn {

// Creates the log file of this job and sets szLogFile and bLogOn. Host's thread, at job start.
void LogOpen(Job& job, const char* directory);

// Appends one line to the log of the current job. `format` is UTF-8, as in the sources; %s takes
// text that is already in code page 936. A line holds at most 510 bytes, more is cut.
void LogPrint(const char* format, ...) QRN_PRINTF_CHECKED(1, 2);

// Fills with blanks a place that a thread which was ended by force had taken and not written to.
// Host's thread, while it is the only one.
void LogDropUnwritten(Job& job);

}  // namespace qrn

#endif  // QRN_DIAG_JOB_LOG_H_
