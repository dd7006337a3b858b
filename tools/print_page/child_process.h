// Runs another program without a shell.
#ifndef QRN_TOOLS_PRINT_PAGE_CHILD_PROCESS_H_
#define QRN_TOOLS_PRINT_PAGE_CHILD_PROCESS_H_

#include <sys/types.h>

#include <string>
#include <vector>

#include "print_page/render_folder.h"

namespace qrn::tool {

// A program whose standard output is read while it runs. What it says on standard error is kept in
// a file, for a reason when it fails.
class ChildProcess {
 public:
  // It runs in `folder`, which outlives it; `messages` is the name of its file there, of its own
  // for each of several that run at a time.
  explicit ChildProcess(const RenderFolder& folder, const char* messages = "messages")
      : folder_(folder), messages_(messages) {}
  ~ChildProcess();  // ends it when nobody waited for it
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  // arguments[0] is looked up in PATH. False, with a reason, when it cannot be started.
  bool Start(const std::vector<std::string>& arguments, std::string* error);
  // The next bytes of its standard output; 0 at the end.
  std::size_t Read(void* buffer, std::size_t bytes);
  std::string ReadAll();
  // Drops what it still writes and waits for its end. False when it did not end with 0; *error is
  // then one line of what it said.
  bool Wait(std::string* error);
  // The same for a program that reports damage but exits with 0: whatever it says is a failure, and
  // its first line the reason.
  bool WaitSilent(std::string* error);
  // What it has said on standard error.
  std::string Said() const;

 private:
  bool WaitForEnd();
  // Preceded by the program's name, unless the reason begins with it.
  std::string Named(const std::string& reason) const;
  void CloseOutput();

  const RenderFolder& folder_;
  const char* messages_;
  std::string name_;
  pid_t child_ = 0;
  int output_ = -1;
};

// The line of a program's messages that says what is wrong: the first that names an error, else the
// last one.
std::string ReasonIn(const std::string& messages);
// The first line of the messages that is not blank; "" when there is none.
std::string FirstLineOf(const std::string& messages);

}  // namespace qrn::tool

#endif  // QRN_TOOLS_PRINT_PAGE_CHILD_PROCESS_H_
