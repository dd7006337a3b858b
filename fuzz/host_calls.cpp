// Host misuse: any calls of the twelve exports in any order with any arguments, on a virtual
// printer that works or misbehaves. Every call must return, the printer must see nothing that
// breaks the protocol, and the end of the last job must leave nothing behind.
//
// Input: u8 machine, u8 quirk, u8 scheduling, then calls: u8 which, and its arguments.
#include <array>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "fuzz/fuzz_input.h"
#include "fuzz/whole_jobs.h"
#include "params/printer_params.h"
#include "platform/platform.h"
#include "sim/sim_platform.h"
#include "sim/virtual_printer.h"

using namespace qrn;

namespace {

constexpr std::uint64_t kLimitMs = 2 * 3600 * 1000;
constexpr int kJobsMax = 4;
constexpr std::uint32_t kPassesMax = 200;  // of a job; each line behind the last one makes dozens
constexpr std::uint32_t kLinesMax = 1500;
constexpr std::uint32_t kLineBytesMax = 65536;  // more than the longest line that is affordable

constexpr std::uint8_t kNullDesc = 0xFF;  // in place of the bits that name hostile fields

constexpr std::array<const char*, 8> kQuirks = {"",
                                                "refuse:on=connect,status=3,count=2",
                                                "refuse:on=connect,status=9",
                                                "buffer-full:count=15",
                                                "pause:at=2,ms=4000",
                                                "cancel:at=2",
                                                "refuse:on=swath,status=7,at=1,count=2",
                                                "unplug:msg=8,ms=9000"};
constexpr const char* kUnpluggedForGood = "unplug:msg=6";

sim::Machine MachineOf(std::uint8_t bits) {
  sim::Machine machine;
  constexpr sim::Heads kHeads[] = {sim::Heads::kBoth, sim::Heads::kPha, sim::Heads::kPhb};
  machine.heads = kHeads[(bits & 3u) % 3];
  machine.bidirectional = (bits & 4u) == 0;
  machine.fixedDir = (bits >> 3) & 1u;
  machine.mirroredHeads = (bits & 16u) != 0;
  machine.featherPercent = (bits & 32u) != 0 ? 30 : 0;
  machine.flashEvery = (bits & 64u) != 0 ? 2 : 0;
  machine.headGapY.fill((bits & 128u) != 0 ? 5 : 0);
  if (machine.heads != sim::Heads::kBoth) machine.inkOrder.fill({0, 1, 2, 3, 4, 5, 6, 7});
  return machine;
}

sim::QuirkScript QuirksOf(std::uint8_t which) {
  const std::string text =
      (which & 0x80u) != 0 ? kUnpluggedForGood : kQuirks[which % kQuirks.size()];
  if (text.empty()) return {};
  sim::Quirk quirk;
  std::string error;
  FUZZ_CHECK(sim::ParseQuirk(text, &quirk, &error));
  return {quirk};
}

// A description that is right but for the fields that `hostile` names.
HostJobDesc TakeDesc(std::uint8_t hostile, fuzz::Input& in) {
  HostJobDesc desc{};
  desc.resX = (hostile & 1u) != 0 ? in.U32() : PP_GetResolutionX(in.U8() % 4);
  desc.resY = (hostile & 2u) != 0 ? in.U32() : 360;
  desc.width = (hostile & 4u) != 0 ? in.U32() : in.U8();
  desc.height = (hostile & 8u) != 0 ? in.U32() : in.U16() % kLinesMax;
  desc.colors = (hostile & 16u) != 0 ? in.U32() : 8;
  desc.bitsPerPixel = (hostile & 32u) != 0 ? in.U32() : 2;
  return desc;
}

class Host {
 public:
  explicit Host(fuzz::Input& in) : in_(in) {}

  // False when the input asks for more than a run can afford.
  bool Call();

 private:
  bool Start(bool lineFamily);
  void SendLine(bool lineFamily, std::uint32_t color, std::uint32_t bytes, std::uint8_t pattern);
  bool SendWholeLines(bool lineFamily);

  fuzz::Input& in_;
  std::uint32_t lines_ = 0;
  int jobs_ = 0;
};

bool Host::Start(bool lineFamily) {
  if (++jobs_ > kJobsMax) return false;
  const std::uint8_t hostile = in_.U8();
  const bool isNull = hostile == kNullDesc;
  const HostJobDesc desc = isNull ? HostJobDesc{} : TakeDesc(hostile, in_);
  if (!fuzz::IsAffordable(desc)) return false;
  const HostJobDesc* const given = isNull ? nullptr : &desc;
  const std::int32_t result = lineFamily ? PP_Init(given) : StartPrint(given, 0);
  FUZZ_CHECK(result == 1 || (lineFamily && result == 0));
  return true;
}

// `bytes` may be a lie only where nothing behind the line is read: more than any line takes.
void Host::SendLine(bool lineFamily, std::uint32_t color, std::uint32_t bytes,
                    std::uint8_t pattern) {
  const std::vector<std::uint8_t> pixels =
      fuzz::LineOf(pattern, color, lines_, std::min(bytes, kLineBytesMax));
  const std::uint8_t* const line = (pattern & 0xC0u) == 0xC0u ? nullptr : pixels.data();
  if (lineFamily) {
    const std::int32_t result = PP_SendALineAColorData(color, bytes, line, 0);
    FUZZ_CHECK(result == 0 || result == 1);
  } else {
    FUZZ_CHECK(WriteRipData(line, bytes) == bytes);
  }
}

bool Host::SendWholeLines(bool lineFamily) {
  const std::uint32_t lines = 4u * in_.U8();
  const std::uint8_t bytes = in_.U8(), pattern = in_.U8() & 0x3F;
  if (lines_ + lines > kLinesMax) return false;
  for (std::uint32_t line = 0; line < lines; ++line, ++lines_) {
    if (GetJob().passNo > kPassesMax) return false;
    for (std::uint32_t color = 0; color < 8; ++color) SendLine(lineFamily, color, bytes, pattern);
  }
  return true;
}

bool Host::Call() {
  const std::uint8_t which = in_.U8();
  switch (which % 14) {
    case 0:
      FUZZ_CHECK(InitPrinter(in_.U32()) == 1);
      break;
    case 1:
      return Start(false);
    case 2: {
      const std::uint32_t bytes = in_.U32();
      SendLine(false, 0, bytes, in_.U8());
      break;
    }
    case 3:
      FUZZ_CHECK(EndRipData() == 1);
      break;
    case 4:
      FUZZ_CHECK(AbortPrint() == 1);
      break;
    case 5:
      FUZZ_CHECK(ExitPrinter() == 1);
      break;
    case 6:
      return Start(true);
    case 7:
      FUZZ_CHECK(PP_Uninit() == 1);
      break;
    case 8: {
      const std::uint32_t color = in_.U32(), bytes = in_.U32();
      SendLine(true, color, bytes, in_.U8());
      break;
    }
    case 9: {
      // On the heap, so that a byte too many is found.
      std::vector<char> text(sizeof "Undefine error!", '?');
      if ((in_.U8() & 1u) != 0) {
        FUZZ_CHECK(PP_GetErrorMsg(nullptr) == 1);
      } else {
        FUZZ_CHECK(PP_GetErrorMsg(text.data()) == 1);
        FUZZ_CHECK(std::memcmp(text.data(), "Undefine error!", text.size()) == 0);
      }
      break;
    }
    case 10:
      FUZZ_CHECK(PP_GetResolutionX(in_.U32()) <= 2160);
      break;
    case 11:
      FUZZ_CHECK(PP_GetResolutionY(in_.U32()) == 360);
      break;
    case 12:
      return SendWholeLines(false);
    default:
      return SendWholeLines(true);
  }
  return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input in(data, size);
  const std::uint8_t machine = in.U8(), quirk = in.U8();
  sim::VirtualPrinter printer(MachineOf(machine), QuirksOf(quirk));
  sim::SimOptions options;
  options.seed = in.U8();
  options.limitMs = kLimitMs;
  {
    sim::SimPlatform platform(printer, options);
    UsePlatform(&platform);
    GetJob() = Job{};
    GetPrinterParams() = PrinterParams{};
    Host host(in);
    while (!in.Empty() && host.Call()) continue;
    // A start that no printer accepts ends what is left of the job before.
    const HostJobDesc none{};
    PP_Init(&none);
    PP_Uninit();
    fuzz::CheckNothingLeft(platform);
    UsePlatform(nullptr);
  }
  FUZZ_CHECK(printer.Violation() == "");
  return 0;
}
