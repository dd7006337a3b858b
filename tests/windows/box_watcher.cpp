// Runs a host that has no printer, on the real system, and stands in for its user: waits for the
// message box, writes its text to a file, lets it be photographed, presses its button.
//
//   box_watcher HOST TEXT PHOTOGRAPHED
//
// TEXT is that file, in the system's code page, PHOTOGRAPHED one that it waits for. Exit code: the
// host's.
#include <windows.h>

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>

namespace {

constexpr int kPolls = 300;
constexpr DWORD kPollMs = 100;
constexpr DWORD kPaintMs = 500;

template <class Ready>
bool WaitFor(Ready ready) {
  for (int poll = 0; poll < kPolls; ++poll) {
    if (ready()) return true;
    Sleep(kPollMs);
  }
  return false;
}

// The longest text in the box: the button's is shorter.
BOOL CALLBACK KeepLongest(HWND child, LPARAM kept) {
  char text[512] = "";
  SendMessageA(child, WM_GETTEXT, sizeof text, reinterpret_cast<LPARAM>(text));
  auto* longest = reinterpret_cast<std::string*>(kept);
  if (std::strlen(text) > longest->size()) *longest = text;
  return TRUE;
}

// No file when there is no box.
void AnswerBox(const std::string& file, const char* photographed) {
  HWND box = nullptr;
  if (!WaitFor([&box] { return (box = FindWindowA(nullptr, "Tip")) != nullptr; })) return;
  Sleep(kPaintMs);
  std::string text;
  EnumChildWindows(box, KeepLongest, reinterpret_cast<LPARAM>(&text));
  std::ofstream(file + ".part", std::ios::binary) << text;
  std::filesystem::rename(file + ".part", file);
  (void)WaitFor([photographed] { return std::filesystem::exists(photographed); });
  PostMessageA(box, WM_COMMAND, IDOK, 0);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) {
    std::fprintf(stderr, "usage: box_watcher HOST TEXT PHOTOGRAPHED\n");
    return 2;
  }
  STARTUPINFOA startup{};
  startup.cb = sizeof startup;
  PROCESS_INFORMATION host{};
  if (!CreateProcessA(nullptr, argv[1], nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup,
                      &host)) {
    std::fprintf(stderr, "%s: error %lu\n", argv[1], GetLastError());
    return 2;
  }
  AnswerBox(argv[2], argv[3]);
  DWORD exitCode = STILL_ACTIVE;
  WaitForSingleObject(host.hProcess, kPolls * kPollMs);
  GetExitCodeProcess(host.hProcess, &exitCode);
  TerminateProcess(host.hProcess, 3);  // where it still runs
  return static_cast<int>(exitCode);
}
