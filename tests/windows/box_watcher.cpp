// Runs a host that has no printer, on the real system, and stands in for its user: waits for the
// message box, checks its text to the byte, lets it be photographed, presses its button.
//
//   box_watcher HOST english|chinese SHOWN PHOTOGRAPHED
//
// SHOWN is a file that it makes once the box stands, PHOTOGRAPHED one that it waits for. Exit code
// 0: the text was right, and the host ended with exit code 1.
#include <windows.h>

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>

#include "diag/driver_error.h"
#include "diag/error_texts.h"

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

// The text of the host's box, which is closed then; "" when there is none.
std::string AnswerBox(const char* shown, const char* photographed) {
  HWND box = nullptr;
  if (!WaitFor([&box] { return (box = FindWindowA(nullptr, "Tip")) != nullptr; })) return "";
  Sleep(kPaintMs);
  std::string text;
  EnumChildWindows(box, KeepLongest, reinterpret_cast<LPARAM>(&text));
  std::ofstream(shown) << "shown\n";
  (void)WaitFor([photographed] { return std::filesystem::exists(photographed); });
  PostMessageA(box, WM_COMMAND, IDOK, 0);
  return text;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 5) {
    std::fprintf(stderr, "usage: box_watcher HOST english|chinese SHOWN PHOTOGRAPHED\n");
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
  const std::string text = AnswerBox(argv[3], argv[4]);
  DWORD exitCode = STILL_ACTIVE;
  WaitForSingleObject(host.hProcess, kPolls * kPollMs);
  GetExitCodeProcess(host.hProcess, &exitCode);
  TerminateProcess(host.hProcess, 3);  // where it still runs

  char wanted[qrn::kErrorSlotBytes];
  qrn::CopyErrorText(qrn::kErrorNoDevice, std::strcmp(argv[2], "chinese") == 0, wanted);
  std::printf("%s\n", text.c_str());
  if (text != wanted) std::fprintf(stderr, "the box should say:\n%s\n", wanted);
  if (exitCode != 1) std::fprintf(stderr, "the host's exit code is %lu\n", exitCode);
  return text == wanted && exitCode == 1 ? 0 : 1;
}
