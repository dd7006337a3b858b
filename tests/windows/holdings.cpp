#include "jobs/holdings.h"

#include <windows.h>

#include <gtest/gtest.h>
#include <tlhelp32.h>

namespace {

std::size_t Threads() {
  const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
  THREADENTRY32 entry{};
  entry.dwSize = sizeof entry;
  std::size_t threads = 0;
  for (BOOL more = Thread32First(snapshot, &entry); more; more = Thread32Next(snapshot, &entry))
    threads += entry.th32OwnerProcessID == GetCurrentProcessId();
  CloseHandle(snapshot);
  return threads;
}

std::size_t Handles() {
  DWORD handles = 0;
  EXPECT_TRUE(GetProcessHandleCount(GetCurrentProcess(), &handles));
  return handles;
}

}  // namespace

// The test framework has a thread that waits for the end of each thread that has used it.
Holdings::Holdings() {
  const testing::ScopedTrace first(__FILE__, __LINE__, "");
  threads_ = Threads();
  handles_ = Handles();
}

void Holdings::ExpectTheSame() const {
  for (int poll = 0; poll < 1000 && Threads() != threads_; ++poll) Sleep(10);
  EXPECT_EQ(threads_, Threads());
  EXPECT_EQ(handles_, Handles());
}
