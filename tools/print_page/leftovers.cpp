#include "print_page/leftovers.h"

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <memory>
#include <new>
#include <set>
#include <string_view>
#include <system_error>
#include <thread>

namespace qrn::tool {
namespace {

struct Leftovers {
  SignalMutex mutex;
  std::set<std::filesystem::path> paths;
  std::set<pid_t> children;
};

// Never destroyed: the signal thread may use it while the program ends.
Leftovers& All() {
  static auto& all = *new Leftovers;
  return all;
}

// The children first: they write into the folders. A child is waited for by nobody else while it is
// noted. The lock is never given back, so that nothing new is left while the program ends.
void CleanUp() {
  Leftovers& all = All();
  all.mutex.lock();
  for (const pid_t child : all.children) {
    kill(child, SIGKILL);
    siginfo_t ended{};
    waitid(P_PID, static_cast<id_t>(child), &ended, WEXITED | WNOWAIT);
  }
  std::error_code ignored;
  for (const auto& path : all.paths) std::filesystem::remove_all(path, ignored);
}

void EndOnSignal(sigset_t signals) {
  int number = 0;
  sigwait(&signals, &number);
  CleanUp();
  pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
  raise(number);
}

// What the last steps may use when there is no memory left.
std::unique_ptr<std::array<char, 1 << 20>> g_reserve;

void EndForLackOfMemory() {
  thread_local bool ending = false;
  if (ending) throw std::bad_alloc();
  ending = true;
  g_reserve.reset();
  try {
    CleanUp();
  } catch (const std::bad_alloc&) {  // what has not been removed by now stays
  }
  constexpr std::string_view kMessage = "print-page: there is not enough memory for this page\n";
  (void)!write(STDERR_FILENO, kMessage.data(), kMessage.size());
  _exit(1);
}

}  // namespace

std::unique_lock<SignalMutex> HoldOffSignals() { return std::unique_lock(All().mutex); }

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

void CleanUpAtAnyEnd() {
  sigset_t signals, faults;
  sigemptyset(&signals);
  for (const int number : {SIGHUP, SIGINT, SIGQUIT, SIGTERM}) {
    struct sigaction action {};
    // Whoever started the program may want it to live on.
    if (sigaction(number, nullptr, &action) == 0 && action.sa_handler != SIG_IGN)
      sigaddset(&signals, number);
  }
  sigemptyset(&faults);
  sigaddset(&faults, SIGPIPE);
  sigaddset(&faults, SIGXFSZ);
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  pthread_sigmask(SIG_BLOCK, &faults, nullptr);
  std::thread(EndOnSignal, signals).detach();
  g_reserve = std::make_unique<std::array<char, 1 << 20>>();
  std::set_new_handler(EndForLackOfMemory);
}

void EndOnBrokenPipe() {
  sigset_t pipe;
  sigemptyset(&pipe);
  sigaddset(&pipe, SIGPIPE);
  pthread_sigmask(SIG_UNBLOCK, &pipe, nullptr);  // it is pending
}

}  // namespace qrn::tool
