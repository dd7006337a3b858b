// A host without a printer, on the real system: its user is told so in a real box. Waits for the
// box, checks its text to the byte, lets it be photographed, presses its button.
//
//   show_box english|chinese SHOWN PHOTOGRAPHED
//
// SHOWN is a file that it makes once the box stands, PHOTOGRAPHED one that it waits for.
#include <windows.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>

#include "diag/driver_error.h"
#include "diag/error_texts.h"
#include "qrn_driver.h"
#include "windows/loaded_dll.h"

namespace {

constexpr int kPolls = 300;
constexpr DWORD kPollMs = 100;

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
  GetWindowTextA(child, text, sizeof text);
  auto* longest = reinterpret_cast<std::string*>(kept);
  if (std::strlen(text) > longest->size()) *longest = text;
  return TRUE;
}

struct BoxWatch {
  std::string shownFile, photographedFile;
  std::string text;  // what the box says

  void Run() {
    HWND box = nullptr;
    if (!WaitFor([&box] { return (box = FindWindowA(nullptr, "Tip")) != nullptr; })) {
      std::fprintf(stderr, "no box is shown\n");
      std::_Exit(1);
    }
    EnumChildWindows(box, KeepLongest, reinterpret_cast<LPARAM>(&text));
    Sleep(500);  // until it is painted
    std::ofstream(shownFile) << "shown\n";
    (void)WaitFor([this] { return std::filesystem::exists(photographedFile); });
    PostMessageA(box, WM_COMMAND, IDOK, 0);
  }
};

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) {
    std::fprintf(stderr, "usage: show_box english|chinese SHOWN PHOTOGRAPHED\n");
    return 2;
  }
  const bool chinese = std::strcmp(argv[1], "chinese") == 0;
  const LoadedDll dll;
  const auto init =
      reinterpret_cast<decltype(&PP_Init)>(reinterpret_cast<void*>(dll.Find("PP_Init")));
  const auto uninit =
      reinterpret_cast<decltype(&PP_Uninit)>(reinterpret_cast<void*>(dll.Find("PP_Uninit")));
  BoxWatch watch{argv[2], argv[3], ""};
  std::thread watcher([&watch] { watch.Run(); });
  HostJobDesc desc{};
  desc.resX = 1440;
  desc.resY = 360;
  desc.height = desc.width = 480;
  desc.colors = 8;
  desc.bitsPerPixel = 2;
  const int started = init(&desc);
  watcher.join();
  const int ended = uninit();

  char wanted[qrn::kErrorSlotBytes];
  qrn::CopyErrorText(qrn::kErrorNoDevice, chinese, wanted);
  std::printf("%s\n", watch.text.c_str());
  if (watch.text != wanted) std::fprintf(stderr, "the box should say:\n%s\n", wanted);
  if (started != 0 || ended != 1)
    std::fprintf(stderr, "PP_Init %d, PP_Uninit %d\n", started, ended);
  return watch.text == wanted && started == 0 && ended == 1 ? 0 : 1;
}
