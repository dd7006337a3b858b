#include "print_page/leftovers.h"

#include <signal.h>
#include <sys/wait.h>

#include <set>
#include <system_error>
#include <thread>

namespace qrn::tool {
namespace {

struct Leftovers {
  std::mutex mutex;
  std::set<std::filesystem::path> paths;
  std::set<pid_t> children;
};

// Never destroyed: the signal thread may use it while the program ends.
Leftovers& All() {
  static auto& all = *new Leftovers;
  return all;
}

void EndOnSignal(sigset_t signals) {
  int number = 0;
  sigwait(&signals, &number);
  Leftovers& all = All();
  // Never unlocked, so that nothing new is left while the program ends. The children first: they
  // write into the folders. A child is waited for by nobody else while it is noted.
  all.mutex.lock();
  for (const pid_t child : all.children) {
    kill(child, SIGKILL);
    siginfo_t ended{};
    waitid(P_PID, static_cast<id_t>(child), &ended, WEXITED | WNOWAIT);
  }
  std::error_code ignored;
  for (const auto& path : all.paths) std::filesystem::remove_all(path, ignored);
  pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
  raise(number);
}

}  // namespace

std::unique_lock<std::mutex> HoldOffSignals() { return std::unique_lock(All().mutex); }

void NotePath(const std::filesystem::path& path) { All().paths.insert(path); }

void NoteChild(pid_t child) { All().children.insert(child); }

void ForgetPath(const std::filesystem::path& path) {
  const auto lock = HoldOffSignals();
  All().paths.erase(path);
}

void ForgetChild(pid_t child) {
  const auto lock = HoldOffSignals();
  All().children.erase(child);
}

Leftover::Leftover(const std::filesystem::path& path) : path_(path) {
  const auto lock = HoldOffSignals();
  NotePath(path_);
}

Leftover::~Leftover() {
  std::error_code ignored;
  std::filesystem::remove(path_, ignored);
  ForgetPath(path_);
}

void CleanUpOnSignals() {
  sigset_t signals;
  sigemptyset(&signals);
  for (const int number : {SIGHUP, SIGINT, SIGTERM}) {
    struct sigaction action {};
    // Whoever started the program may want it to live on.
    if (sigaction(number, nullptr, &action) == 0 && action.sa_handler != SIG_IGN)
      sigaddset(&signals, number);
  }
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  std::thread(EndOnSignal, signals).detach();
}

}  // namespace qrn::tool
