// What must not outlive the program: its temporary files and folders and the programs it runs.
// Destructors see to that where the program gets as far as to them.
#ifndef QRN_TOOLS_PRINT_PAGE_LEFTOVERS_H_
#define QRN_TOOLS_PRINT_PAGE_LEFTOVERS_H_

#include <sys/types.h>

#include <filesystem>
#include <mutex>
#include <string>

namespace qrn::tool {

// Recursive, because a thread that holds it locks it again when its memory runs out.
using SignalMutex = std::recursive_mutex;

// While the lock lives, no signal ends the program: what is made is noted before one can.
[[nodiscard]] std::unique_lock<SignalMutex> HoldOffSignals();
// Requires: HoldOffSignals
void NotePath(const std::filesystem::path& path);
void NoteChild(pid_t child);

void ForgetPath(const std::filesystem::path& path);
void ForgetChild(pid_t child);

// A file that is removed with the object, if it is there.
class Leftover {
 public:
  // `path`: absolute, since the current folder changes.
  explicit Leftover(const std::filesystem::path& path);
  ~Leftover();
  Leftover(const Leftover&) = delete;
  Leftover& operator=(const Leftover&) = delete;

  std::string Path() const { return path_.string(); }

 private:
  std::filesystem::path path_;
};

// From now on, when a signal asks the program to end or its memory does not suffice, it first ends
// the noted children and removes the noted paths; then it ends as it would have. Writing into a
// broken pipe or past a limit on the size of files is an error of that write and no more. Call it
// before any other thread is started: signals are taken by one thread, all others block them.
void CleanUpAtAnyEnd();

// Ends the program by the signal of a broken pipe, after a write that failed for that; returns when
// the signal is ignored.
void EndOnBrokenPipe();

}  // namespace qrn::tool

#endif  // QRN_TOOLS_PRINT_PAGE_LEFTOVERS_H_
