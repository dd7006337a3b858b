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

extern char** environ;

namespace qrn::tool {

std::string ReasonIn(const std::string& messages) {
  std::istringstream stream(messages);
  std::string line, last;
  while (std::getline(stream, line)) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (line.empty()) continue;
    if (line.find("rror") != std::string::npos) return line;
    last = line;
  }
  return last.empty() ? "failed without a message" : last;
}

ChildProcess::~ChildProcess() {
  CloseOutput();
  if (child_ == 0) return;
  kill(child_, SIGTERM);
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
  posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_adddup2(&actions, pipeEnds[1], STDOUT_FILENO);
  posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, said_.c_str(),
                                   O_WRONLY | O_CREAT | O_TRUNC, 0600);
  std::vector<char*> argv;
  for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
  argv.push_back(nullptr);
  const int failed = posix_spawnp(&child_, argv[0], &actions, nullptr, argv.data(), environ);
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

bool ChildProcess::Wait(std::string* error) {
  std::array<char, 4096> dropped;
  while (Read(dropped.data(), dropped.size()) != 0) {
  }
  CloseOutput();
  int status = 0;
  waitpid(child_, &status, 0);
  child_ = 0;
  if (WIFEXITED(status) && WEXITSTATUS(status) == 0) return true;
  std::ostringstream messages;
  messages << std::ifstream(said_).rdbuf();
  *error = name_ + ": " + ReasonIn(messages.str());
  return false;
}

}  // namespace qrn::tool
