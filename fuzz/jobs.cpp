// Whole jobs on virtual time: any calls of the exports with any arguments, on a printer with any
// parameter block and any quirks. Every call must return, the printer must see nothing that breaks
// the rules of the wire, no ink may be laid that was not handed over, and the end of the last job
// must leave nothing behind.
//
// Input: u8 scheduling; i8 bytes by which the block is longer than a whole one; u8 count of bytes
// in it that are not the usual ones, for each u8 place, u8 value; quirks as print-page takes them,
// with blanks in between, up to a zero byte or the end; calls: u8 which, and its arguments.
#include <algorithm>
#include <bit>
#include <cstdint>
#include <sstream>
#include <string>
#include <vector>

#include "base/bytes.h"
#include "fuzz/fuzz_input.h"
#include "job/job.h"
#include "params/connect.h"
#include "params/param_block.h"
#include "platform/platform.h"
#include "qrn_driver.h"
#include "sim/firmware/parameter_block.h"
#include "sim/time/sim_platform.h"
#include "sim/virtual_printer.h"

using namespace qrn;

namespace {

constexpr std::uint64_t kLimitMs = 2 * 3600 * 1000;
// A printer may never answer, and a job then waits for ever: somebody pulls the plug.
constexpr const char* kRescue = "unplug:t=100000";
constexpr int kJobsMax = 4;
constexpr std::uint32_t kPassesMax = 200;  // of a job; each line after the last one makes dozens
constexpr std::uint32_t kLinesMax = 1500;
constexpr std::uint32_t kLineBytesMax = 65536;  // more than the longest line that is affordable
constexpr std::uint64_t kBytesMax = 2u << 20;   // handed over

// A job's buffers take at most 32 MiB, or more than can be obtained, which must be refused.
bool IsAffordable(const HostJobDesc& desc) {
  constexpr std::uint64_t kMemoryMax = 32u << 20, kObtainableMax = 0xFFFFFFFF;
  const std::uint64_t resX = desc.resX & 0xFFFFu, resY = desc.resY & 0xFFFFu;
  const std::uint64_t stride = (std::uint64_t{desc.width * desc.bitsPerPixel} + 31) / 32 * 4;
  const std::uint64_t passBuffer = 4 * resY * stride;
  const std::uint64_t passes = resX < 1440 ? 3 : resX < 1620 ? 4 : resX < 2160 ? 6 : 8;
  const std::uint64_t twoHeads = (resX * 6400 / 254 + 8 * stride) * 360 / passes;
  const std::uint64_t oneHead = 720 * (4 * stride / 3 + 1000);  // where that is more
  return passBuffer > kObtainableMax ||
         8 * passBuffer + 7 * std::max(twoHeads, oneHead) <= kMemoryMax;
}

// The machine that reports such a block, as far as the printer holds a job against it.
sim::Machine MachineOf(const std::vector<std::uint8_t>& block) {
  sim::Machine machine;
  if (block.size() < sim::kParameterBlockBytes) return machine;
  const std::uint8_t heads = block[90] & 0xF0;
  machine.heads = heads == 0x30          ? sim::Heads::kBoth
                  : (heads & 0x10u) != 0 ? sim::Heads::kPha
                  : (heads & 0x20u) != 0 ? sim::Heads::kPhb
                                         : sim::Heads::kNone;
  machine.twoHeadCarriage = (block[91] & 0x0Fu) == 1;
  return machine;
}

bool Says(const sim::Quirk& quirk) { return quirk.kind == sim::Quirk::Kind::kSay; }

// Other words in place of a block would be another machine than the printer's.
sim::QuirkScript TakeQuirks(fuzz::Input& in) {
  std::string text;
  while (const std::uint8_t character = in.U8()) text.push_back(static_cast<char>(character));
  std::istringstream stream(text + " " + kRescue);
  sim::QuirkScript script;
  for (std::string word; stream >> word;) {
    sim::Quirk quirk;
    std::string error;
    const bool isQuirk = sim::ParseQuirk(word, &quirk, &error);
    FUZZ_CHECK(isQuirk == error.empty());
    const bool onConnect = quirk.on == sim::Message::kAny || quirk.on == sim::Message::kConnect;
    if (isQuirk && !(onConnect && Says(quirk))) script.push_back(quirk);
  }
  return script;
}

// The block that the printer reports; of the usual length and bytes it is its own.
std::vector<std::uint8_t> TakeBlock(fuzz::Input& in, bool* isOwn) {
  const auto usual = sim::ParameterBlock(sim::Machine{});
  std::vector<std::uint8_t> block(usual.begin(), usual.end());
  const auto longer = static_cast<std::int8_t>(in.U8());
  const std::uint8_t changes = in.U8();
  for (int i = 0; i < changes; ++i) {
    const std::uint8_t at = in.U8();
    block[at % usual.size()] = in.U8();
  }
  *isOwn = longer == 0 && changes == 0;
  block.resize(static_cast<std::size_t>(std::ssize(block) + longer));
  return block;
}

// A description that is right except for the fields that `hostile` names.
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

// Some plane line of a small image: blank, solid, or noise that repeats.
std::vector<std::uint8_t> LineOf(std::uint8_t pattern, std::uint32_t color, std::uint32_t line,
                                 std::size_t bytes) {
  std::vector<std::uint8_t> pixels(bytes);
  if (((pattern >> 3) & color) != 0 || (pattern & 7u) == 0) return pixels;
  std::uint32_t noise = pattern + 31u * color + 7u * line;
  for (std::uint8_t& byte : pixels) {
    noise = noise * 1664525u + 1013904223u;
    byte = (pattern & 7u) == 1 ? std::uint8_t{0xFF} : static_cast<std::uint8_t>(noise >> 24);
  }
  return pixels;
}

class Host {
 public:
  explicit Host(fuzz::Input& in) : in_(in) {}

  // What was handed over, in drop levels.
  std::uint64_t Ink() const { return ink_; }

  // False when the input asks for more than a run can afford.
  bool Call() {
    const std::uint8_t which = in_.U8() % 9;
    line_ = which % 2 == 0;
    if (which == 0) Ask();
    if (which == 1 || which == 2) return Start();
    if (which == 3 || which == 4) return SendWholeLines();
    if (which == 5 || which == 6) {
      const std::uint32_t color = line_ ? in_.U32() : 0, bytes = in_.U32();
      SendLine(color, bytes, in_.U8());
    }
    if (which > 6) FUZZ_CHECK((line_ ? PP_Uninit() : EndRipData()) == 1);
    return bytes_ <= kBytesMax;
  }

 private:
  // The exports that only answer.
  void Ask() {
    const std::uint32_t index = in_.U32();
    FUZZ_CHECK(PP_GetErrorMsg(nullptr) == 1 && AbortPrint() == 1 && ExitPrinter() == 1);
    FUZZ_CHECK(InitPrinter(index) == 1 && PP_GetResolutionY(index) == 360);
    FUZZ_CHECK(PP_GetResolutionX(index) <= 2160);
  }

  bool Start() {
    const std::uint8_t hostile = in_.U8();
    const bool isNull = hostile == 0xFF;
    const HostJobDesc desc = isNull ? HostJobDesc{} : TakeDesc(hostile, in_);
    if (++jobs_ > kJobsMax || !IsAffordable(desc)) return false;
    const HostJobDesc* const given = isNull ? nullptr : &desc;
    const std::int32_t result = line_ ? PP_Init(given) : StartPrint(given, 0);
    FUZZ_CHECK(result == 1 || (line_ && result == 0));
    return true;
  }

  // `bytes` may be a lie only where nothing after the line is read: more than any line takes.
  void SendLine(std::uint32_t color, std::uint32_t bytes, std::uint8_t pattern) {
    const auto pixels = LineOf(pattern, color, lines_, std::min(bytes, kLineBytesMax));
    const std::uint8_t* const line = (pattern & 0xC0u) == 0xC0u ? nullptr : pixels.data();
    for (const std::uint8_t byte : pixels)
      ink_ += static_cast<std::uint64_t>(std::popcount(byte) + std::popcount(byte & 0xAAu));
    bytes_ += pixels.size();
    const std::uint32_t result =
        line_ ? static_cast<std::uint32_t>(PP_SendALineAColorData(color, bytes, line, 0))
              : WriteRipData(line, bytes);
    FUZZ_CHECK(line_ ? result <= 1 : result == bytes);
  }

  bool SendWholeLines() {
    const std::uint32_t lines = 4u * in_.U8();
    const std::uint16_t bytes = in_.U16();
    const std::uint8_t pattern = in_.U8() & 0x3F;
    if (lines_ + lines > kLinesMax || bytes_ + 8ull * lines * bytes > kBytesMax) return false;
    for (std::uint32_t line = 0; line < lines; ++line, ++lines_) {
      if (GetJob().passNo > kPassesMax) return false;
      for (std::uint32_t color = 0; color < 8; ++color) SendLine(color, bytes, pattern);
    }
    return true;
  }

  fuzz::Input& in_;
  bool line_ = false;  // the call is one of the line family
  std::uint64_t ink_ = 0, bytes_ = 0;
  std::uint32_t lines_ = 0;
  int jobs_ = 0;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input in(data, size);
  sim::SimOptions options;
  options.seed = in.U8();
  options.limitMs = kLimitMs;
  bool ownBlock = false;
  const std::vector<std::uint8_t> block = TakeBlock(in, &ownBlock);
  sim::QuirkScript script = TakeQuirks(in);
  if (!ownBlock) {
    sim::Quirk& report = script.emplace_back();
    report.kind = sim::Quirk::Kind::kSay;
    report.on = sim::Message::kConnect;
    report.count = sim::kQuirkCountMax;
    std::vector<std::uint16_t>& words = report.words.emplace_back().words;
    words = {2, 1, 0, 0};
    for (std::size_t at = 0; at + 2 <= block.size(); at += 2) words.push_back(U16(&block[at]));
  }
  // A printer that refuses what it says it has taken breaks its own rules.
  if (std::any_of(script.begin(), script.end(), Says)) {
    std::erase_if(script, [](const auto& q) { return q.kind == sim::Quirk::Kind::kRefuse; });
  }
  const sim::Machine machine = MachineOf(block);
  sim::VirtualPrinter printer(machine, script);
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
    FUZZ_CHECK(platform.LiveThreads() == 0 && platform.OpenDevices() == 0);
    FUZZ_CHECK(GetJob().PrintOutBuf == nullptr && GetJob().Mem.pPassBuffer[0] == nullptr);
    UsePlatform(nullptr);
    // Without a head in use, nozzles change places, and with them small drops and large ones.
    const bool same = machine.heads != sim::Heads::kNone;
    FUZZ_CHECK(printer.Stats().inkLaid <= (same ? host.Ink() : 2 * host.Ink()));
  }
  FUZZ_CHECK(printer.Violation() == "");
  return 0;
}
