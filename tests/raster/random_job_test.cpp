// Jobs drawn from seeds, in the core and on the plain raster at once: any machine that a parameter
// block can describe, lines in any order and of any length, parameter updates and flushes between
// them. Every swath must be the same to the byte.
#include <algorithm>
#include <cstring>
#include <deque>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "base/bytes.h"
#include "raster/core_job.h"
#include "reference/plain_job.h"
#include "support/test_seed.h"

namespace qrn {
namespace {

using Bytes = std::vector<std::uint8_t>;

class Draw {
 public:
  explicit Draw(std::uint64_t seed) : random_(seed) {}
  std::uint32_t Below(std::uint32_t end) { return static_cast<std::uint32_t>(random_() % end); }
  std::uint32_t From(std::uint32_t first, std::uint32_t last) {
    return first + Below(last - first + 1);
  }
  bool OneIn(std::uint32_t n) { return Below(n) == 0; }
  std::uint8_t Byte() { return static_cast<std::uint8_t>(random_()); }
  template <class Range>
  void Shuffle(Range begin, Range end) {
    std::shuffle(begin, end, random_);
  }

 private:
  std::mt19937_64 random_;
};

// Two rows a colour: as pairs on one head, in any order on either, in any order on both, or all
// zeros. A few are corrupt.
void DrawInks(Draw& draw, std::uint8_t* inks) {
  std::uint8_t colors[] = {0, 1, 2, 3, 4, 5, 6, 7};
  draw.Shuffle(colors, colors + 8);
  for (int i = 0; i < 16; ++i) inks[i] = colors[i / 2];
  if (draw.OneIn(3)) {
    draw.Shuffle(inks, inks + 8);
    draw.Shuffle(inks + 8, inks + 16);
  }
  if (draw.OneIn(3)) draw.Shuffle(inks, inks + 16);
  if (draw.OneIn(10)) std::fill(inks, inks + 16, 0);
  if (draw.OneIn(40)) inks[draw.Below(16)] = Low8(draw.Below(9));
}

Bytes DrawBlock(Draw& draw) {
  Bytes block(plain::kBlockBytes);
  for (std::uint8_t& byte : block) byte = draw.Byte();
  block[8] = Low8(draw.Below(draw.OneIn(30) ? 256 : 5));
  if (draw.OneIn(30)) block[72 + block[8] % 5] = block[77] = 0;
  constexpr std::uint8_t kHeads[] = {0x30, 0x30, 0x30, 0x10, 0x20, 0x00, 0x50, 0x70};
  block[90] = Low8(kHeads[draw.Below(8)] + draw.Below(16));
  block[91] = Low8(16 * draw.Below(draw.OneIn(40) ? 16 : 2) + draw.Below(3));
  if (block[90] / 16 == 3) {
    DrawInks(draw, &block[9]);
  } else {
    for (int i = 9; i < 41; ++i) block[i] = Low8(draw.Below(9));
  }
  if (draw.OneIn(4)) block[45 + draw.Below(5)] = 0;
  block[83] = Low8(draw.Below(3));
  constexpr std::uint8_t kFeather[] = {0, 0, 1, 2, 10, 50, 99, 100, 101};
  block[109] = draw.OneIn(2) ? kFeather[draw.Below(9)] : Low8(draw.Below(101));
  if (!draw.OneIn(8)) std::fill(&block[192], &block[196], 0);
  if (!draw.OneIn(8)) block[117] = 0;
  PutU16(&block[204], draw.OneIn(50) ? 0x5212 : 0x5213);
  return block;
}

plain::JobDesc DrawImage(Draw& draw) {
  constexpr std::uint32_t kResolutions[] = {1080, 1440, 1620, 2160, 720};
  plain::JobDesc desc{};
  desc.resX = kResolutions[draw.Below(draw.OneIn(40) ? 5 : 4)];
  desc.resY = draw.OneIn(2) ? 360 : draw.From(361, draw.OneIn(3) ? 2000 : 740);
  if (draw.OneIn(40)) desc.resY = draw.OneIn(2) ? 359 : draw.Below(2);
  const std::uint32_t widths[] = {48, 48, 48, 48, 300, 300, 2100, 2100};
  desc.lineBits = draw.Below(8 * widths[draw.Below(8)]);
  desc.height = draw.From(1, desc.lineBits > 2400 ? 400 : 900);
  if (draw.OneIn(60)) desc.colors = draw.Below(10);
  if (draw.OneIn(60)) desc.bitsPerPixel = draw.Below(4);
  return desc;
}

// Blank, dense, a few dots, ink in one stretch, at the very end alone, or a single dot; often not
// as long as it should be.
Bytes DrawLine(Draw& draw, std::uint32_t stride) {
  Bytes line(draw.OneIn(4) ? draw.Below(stride + 8) : stride);
  const std::uint32_t kind = draw.Below(8);
  if (line.empty()) return line;
  for (std::size_t i = 0; i < line.size(); ++i) {
    const std::uint8_t byte = draw.Byte() & draw.Byte();
    const bool inked = kind == 1 || (kind == 2 && byte % 16 == 1) || (kind == 4 && byte == 64) ||
                       (kind == 3 && i / 40 == line.size() / 80) ||
                       (kind == 5 && i + 1 == line.size());
    line[i] = inked ? byte : 0;
  }
  const std::uint32_t dot = draw.Below(static_cast<std::uint32_t>(line.size()));
  if (kind >= 6) line[dot] = Low8(1u << draw.Below(8));
  return line;
}

class RandomJobs : public CoreJob {
 protected:
  void SetUpJob(std::uint64_t seed) {
    draw = Draw(seed);
    blank = false;
    job.bLogOn = 0;
    block = DrawBlock(draw);
    desc = DrawImage(draw);
    UseKernel(*Kernels()[draw.Below(static_cast<std::uint32_t>(Kernels().size()))]);
    onSwath = [this](auto... parts) { ExpectSwath(parts...); };
  }

  // The reply to the connect may come more than once; the last one counts.
  bool ConnectBoth() {
    plain::Geometry geometry = plain::GeometryOf(block.data(), desc);
    const bool accepted = Connect(block.data(), desc);
    while (accepted && draw.OneIn(4)) {
      block = DrawBlock(draw);
      geometry = plain::GeometryOf(block.data(), desc);
      if (!ParsePrinterParams(job, block.data(), plain::kBlockBytes)) break;
    }
    EXPECT_EQ(geometry.error, job.nErrCode);
    EXPECT_EQ(geometry.accepted, geometry.error == 0 && job.PrintOutBuf != nullptr &&
                                     job.lineStride == geometry.lineStride);
    if (!geometry.accepted || HasFailure()) return false;
    EXPECT_EQ(geometry.maxPrintMm, job.maxPrintMm);
    wanted.clear();
    model = std::make_unique<plain::PlainJob>(block.data(), desc,
                                              [this](const auto& header, const auto& data) {
                                                wanted.push_back({header, data});
                                              });
    if (draw.OneIn(12)) {
      job.nSwathLimit = draw.Below(12);
      model->LimitSwaths(job.nSwathLimit);
    }
    return true;
  }

  void ExpectSwath(const std::uint8_t* header, const std::uint8_t* data, std::size_t bytes) {
    ASSERT_FALSE(wanted.empty());
    const plain::PlainSwath& swath = wanted.front();
    EXPECT_EQ(Bytes(swath.header.begin(), swath.header.end()), Bytes(header, header + 36));
    ASSERT_EQ(swath.data.size(), bytes);
    if (bytes != 0 && std::memcmp(swath.data.data(), data, bytes) != 0) {
      const auto at = std::mismatch(data, data + bytes, swath.data.begin()).first - data;
      FAIL() << "column " << at / 720 << ", byte " << at % 720 << ": " << int{swath.data[at]}
             << " became " << int{data[at]};
    }
    wanted.pop_front();
    ++swaths;
  }

  void AddLineToBoth(std::uint32_t color, const Bytes& line) {
    const auto bytes = static_cast<std::uint32_t>(line.size());
    const std::uint8_t* const data = draw.OneIn(200) ? nullptr : line.data();
    const int result = model->AddLine(color, bytes, data);
    ASSERT_EQ(result, AddLine(job, color, bytes, data));
  }

  void FlushBoth() {
    model->Flush();
    FlushLastBands(job);
  }

  void UpdateBoth() {
    const Bytes other = DrawBlock(draw);
    const auto bytes =
        draw.From(plain::kUpdateBytes - (draw.OneIn(4) ? 1 : 0), plain::kUpdateBytes);
    const Bytes section(&other[8], &other[8] + bytes);
    model->Update(section.data(), bytes);
    UpdateFwPara(job, section.data(), bytes);
  }

  // One line of every colour, or nearly so.
  void AddLines(const std::vector<Bytes>& lines, bool tidy) {
    std::uint32_t order[] = {0, 1, 2, 3, 4, 5, 6, 7};
    draw.Shuffle(order, order + (tidy ? 7 : 8));
    for (std::uint32_t color : order) {
      if (!tidy && color != 7 && draw.OneIn(8)) continue;
      if (!tidy && draw.OneIn(10)) color = draw.OneIn(8) ? color + 8 : draw.Below(8);
      const auto any = draw.Below(static_cast<std::uint32_t>(lines.size()));
      ASSERT_NO_FATAL_FAILURE(AddLineToBoth(color, blank ? Bytes(lines[any].size()) : lines[any]));
    }
  }

  void RunJob() {
    std::vector<Bytes> lines(20);
    for (Bytes& line : lines) line = DrawLine(draw, model->Shape().lineStride);
    const bool tidy = draw.OneIn(2);
    for (std::uint32_t line = 0; model->LinesReceived() < desc.height; ++line) {
      if (draw.OneIn(120)) blank = !blank;
      ASSERT_NO_FATAL_FAILURE(AddLines(lines, tidy));
      if (draw.OneIn(200)) UpdateBoth();
      if (draw.OneIn(1500)) FlushBoth();
      if (draw.OneIn(100)) TakeReady();
      ASSERT_FALSE(HasFailure());
    }
    ASSERT_NO_FATAL_FAILURE(AddLines(lines, tidy));  // ignored
    FlushBoth();
    if (draw.OneIn(10)) FlushBoth();
    WaitSwathQueue(job);
    EXPECT_TRUE(wanted.empty()) << wanted.size() << " swaths are missing";
    EXPECT_EQ(0u, model->Raster().DotsOutside());
  }

  void Run(std::uint64_t seed) {
    SCOPED_TRACE("rerun with --seed=" + std::to_string(seed));
    SetUpJob(seed);
    if (!ConnectBoth()) return;
    RunJob();
    ++jobs;
  }

  Draw draw{0};
  Bytes block;
  plain::JobDesc desc{};
  std::unique_ptr<plain::PlainJob> model;
  std::deque<plain::PlainSwath> wanted;
  bool blank = false;
  int jobs = 0, swaths = 0;
};

// The seed of the run is that of its first job.
TEST_F(RandomJobs, GiveTheSwathsOfThePlainRaster) {
  constexpr std::uint64_t kJobs = 200;
  const std::uint64_t first = TestSeed();
  for (std::uint64_t seed = first; seed < first + kJobs && !HasFailure(); ++seed) Run(seed);
  std::printf("%d jobs accepted, %d swaths compared\n", jobs, swaths);
  EXPECT_GT(swaths, 0);
}

}  // namespace
}  // namespace qrn
