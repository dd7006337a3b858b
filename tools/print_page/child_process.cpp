#include "print_page/child_process.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <sstream>

#include "print_page/leftovers.h"

namespace qrn::tool {

namespace {

constexpr const char* kNoMessage = "failed without a message";

// As the system's calls take it: ends in a null.
std::vector<char*> Pointers(const std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  pointers.reserve(texts.size() + 1);
  for (const std::string& text : texts) pointers.push_back(const_cast<char*>(text.c_str()));
  pointers.push_back(nullptr);
  return pointers;
}

// The next line that is not blank; false when there is none.
bool NextLine(std::istringstream& stream, std::string* line) {
  while (std::getline(stream, *line)) {
    if (!line->empty() && line->back() == '\r') line->pop_back();
    if (!line->empty()) return true;
  }
  return false;
}

}  // namespace

std::string ReasonIn(const std::string& messages) {
  std::istringstream stream(messages);
  std::string line, last = kNoMessage;
  while (NextLine(stream, &line)) {
    if (line.find("rror") != std::string::npos) return line;
    last = line;
  }
  return last;
}

std::string FirstLineOf(const std::string& messages) {
  std::istringstream stream(messages);
  std::string line;
  return NextLine(stream, &line) ? line : "";
}

ChildProcess::~ChildProcess() {
  CloseOutput();
  if (child_ == 0) return;
  kill(child_, SIGTERM);
  ForgetChild(child_);
  waitpid(child_, nullptr, 0);
}

void ChildProcess::CloseOutput() {
  if (output_ >= 0) close(output_);
  output_ = -1;
}

bool ChildProcess::Start(const std::vector<std::string>& arguments, std::string* error) {
  name_ = arguments[0];
  std::array<int, 2> pipeEnds{};
  if (pipe2(pipeEnds.data(), O_CLOEXEC) != 0) {
    *error = std::strerror(errno);
    return false;
  }
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addchdir_np(&actions, folder_.Path("").c_str());
  posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_adddup2(&actions, pipeEnds[1], STDOUT_FILENO);
  posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, messages_, O_WRONLY | O_CREAT | O_TRUNC,
                                   0600);
  const std::vector<char*> argv = Pointers(arguments), variables = Pointers(folder_.Environment());
  // The signals that this program blocks are not blocked there.
  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  sigset_t none;
  sigemptyset(&none);
  posix_spawnattr_setsigmask(&attributes, &none);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK);
  auto lock = HoldOffSignals();
  const int failed =
      posix_spawnp(&child_, argv[0], &actions, &attributes, argv.data(), variables.data());
  if (failed == 0) NoteChild(child_);
  lock.unlock();
  posix_spawnattr_destroy(&attributes);
  posix_spawn_file_actions_destroy(&actions);
  close(pipeEnds[1]);
  output_ = pipeEnds[0];
  if (failed == 0) return true;
  child_ = 0;
  CloseOutput();
  *error = name_ + " cannot be started: " + std::strerror(failed);
  return false;
}

std::size_t ChildProcess::Read(void* buffer, std::size_t bytes) {
  ssize_t got = 0;
  do {
    got = read(output_, buffer, bytes);
  } while (got < 0 && errno == EINTR);
  return got > 0 ? static_cast<std::size_t>(got) : 0;
}

std::string ChildProcess::ReadAll() {
  std::string all;
  std::array<char, 4096> bytes;
  while (const std::size_t got = Read(bytes.data(), bytes.size())) all.append(bytes.data(), got);
  return all;
}

bool ChildProcess::WaitForEnd() {
  std::array<char, 4096> dropped;
  while (Read(dropped.data(), dropped.size()) != 0) {
  }
  CloseOutput();
  int status = 0;
  // Forgotten after its end and before its number may become another's.
  siginfo_t ended{};
  waitid(P_PID, static_cast<id_t>(child_), &ended, WEXITED | WNOWAIT);
  ForgetChild(child_);
  waitpid(child_, &status, 0);
  child_ = 0;
  return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

std::string ChildProcess::Said() const {
  std::ostringstream messages;
  messages << std::ifstream(folder_.Path(messages_)).rdbuf();
  return messages.str();
}

std::string ChildProcess::Named(const std::string& reason) const {
  return reason.compare(0, name_.size() + 1, name_ + " ") == 0 ? reason : name_ + ": " + reason;
}

bool ChildProcess::Wait(std::string* error) {
  if (WaitForEnd()) return true;
  *error = Named(ReasonIn(Said()));
  return false;
}

bool ChildProcess::WaitSilent(std::string* error) {
  const bool ended = WaitForEnd();
  const std::string said = FirstLineOf(Said());
  if (ended && said.empty()) return true;
  *error = Named(said.empty() ? kNoMessage : said);
  return false;
}

}  // namespace qrn::tool
