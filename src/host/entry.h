// Admits one export at a time. A message box lets the host's window procedures run, and these, or a
// second thread of the host, may call in again: such a call is refused and changes nothing. Any
// thread.
#ifndef QRN_HOST_ENTRY_H_
#define QRN_HOST_ENTRY_H_

namespace qrn {

struct Job;

// Every export that works on the job begins with one, which lives as long as the export runs.
class Entry {
 public:
  Entry();
  ~Entry();
  Entry(const Entry&) = delete;
  Entry& operator=(const Entry&) = delete;

  // False: another export is running.
  [[nodiscard]] bool IsAdmitted() const { return admitted_; }

 private:
  bool admitted_;
};

// Logs, once a job, that calls were refused. Only while admitted: the refused call itself must not
// touch the record.
void LogRefusedCalls(Job& job);

}  // namespace qrn

#endif  // QRN_HOST_ENTRY_H_
