#include "print_page/child_process.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>

extern char** environ;

namespace qrn::tool {
namespace {

std::string ReadAll(int file) {
  std::string text;
  std::array<char, 4096> buffer;
  for (ssize_t got = 0; (got = read(file, buffer.data(), buffer.size())) > 0;) {
    text.append(buffer.data(), static_cast<std::size_t>(got));
  }
  return text;
}

std::string LastLine(std::string text) {
  while (!text.empty() && (text.back() == '\n' || text.back() == '\r')) text.pop_back();
  return text.substr(text.rfind('\n') + 1);
}

}  // namespace

bool RunProgram(const std::vector<std::string>& arguments, std::string* error) {
  std::array<int, 2> pipeEnds{};
  if (pipe2(pipeEnds.data(), O_CLOEXEC) != 0) {
    *error = std::strerror(errno);
    return false;
  }
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_adddup2(&actions, pipeEnds[1], STDOUT_FILENO);
  posix_spawn_file_actions_adddup2(&actions, pipeEnds[1], STDERR_FILENO);
  std::vector<char*> argv;
  for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
  argv.push_back(nullptr);
  pid_t child = 0;
  const int failed = posix_spawnp(&child, argv[0], &actions, nullptr, argv.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  close(pipeEnds[1]);
  std::string said;
  int status = 0;
  if (failed == 0) {
    said = ReadAll(pipeEnds[0]);
    waitpid(child, &status, 0);
  }
  close(pipeEnds[0]);
  if (failed != 0) {
    *error = arguments[0] + " cannot be started: " + std::strerror(failed);
    return false;
  }
  if (WIFEXITED(status) && WEXITSTATUS(status) == 0) return true;
  *error = arguments[0] + ": " + LastLine(said);
  return false;
}

}  // namespace qrn::tool
