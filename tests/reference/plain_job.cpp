#include "reference/plain_job.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace qrn::plain {
namespace {

// `count` bytes, little-endian.
template <class Value>
void Put(std::array<std::uint8_t, 36>& header, std::size_t at, int count, Value value) {
  auto rest = static_cast<std::uint64_t>(value);
  for (; count > 0; --count, rest /= 256) header[at++] = static_cast<std::uint8_t>(rest % 256);
}

}  // namespace

PlainJob::PlainJob(const std::uint8_t* block, const JobDesc& desc, TakeSwath take)
    : block_(block, block + kBlockBytes),
      desc_(desc),
      geometry_(GeometryOf(block, desc)),
      raster_(geometry_),
      take_(std::move(take)),
      biDir_(block[41 + ResolutionIndexOf(desc.resX)]),
      calib_(CalibrationOf(block)),
      swathSteps_(StepsOf(geometry_.passStep, Word(block + 128, 4), calib_, desc.resY)) {
  for (auto& header : headers_) Put(header, 6, 2, geometry_.speed * 600);
}

int PlainJob::AddLine(std::uint32_t color, std::uint32_t bytes, const std::uint8_t* line) {
  if (linesReceived_ >= geometry_.height) return 1;
  if (color >= kColors || line == nullptr) return 0;
  bytes = std::min(bytes, geometry_.lineStride);
  std::memcpy(raster_.Row(color, geometry_.firstLineRow + bandLine_), line, bytes);
  if (color != kColors - 1) return 1;
  ++linesReceived_;
  if (++bandLine_ < geometry_.bandLines) return 1;
  RunPasses();
  feedLine_ = linesReceived_;
  raster_.Shift();
  bandLine_ = 0;
  return 1;
}

void PlainJob::Flush() {
  if (swathCount_ >= swathLimit_) return;
  for (int cycle = geometry_.twoHeads ? 5 : 4; cycle > 0; --cycle) {
    RunPasses();
    raster_.Shift();
  }
  started_ = false;
  blankPasses_ = 0;
}

void PlainJob::Update(const std::uint8_t* section, std::uint32_t bytes) {
  if (bytes < kUpdateBytes) return;
  std::memcpy(block_.data() + kUpdateAt, section, kUpdateBytes);
  biDir_ = block_[41 + ResolutionIndexOf(desc_.resX)];
  calib_ = CalibrationOf(block_.data());
  if (calib_ != 0)  // else the steps stay
    swathSteps_ = StepsOf(geometry_.passStep, Word(&block_[128], 4), calib_, desc_.resY);
}

void PlainJob::RunPasses() {
  for (std::uint32_t i = 0; i < geometry_.passCount; ++i) {
    dir_ = geometry_.bidirectional ? 1 - dir_ : geometry_.fixedDir;
    const std::uint32_t passIndex = passNo_++ % geometry_.passCount;
    if (swathCount_ < swathLimit_ && raster_.ConvertPass(passIndex, dir_)) {
      PrintPass(dir_);
    } else {
      ++blankPasses_;
    }
  }
}

void PlainJob::PrintPass(std::uint32_t dir) {
  if (started_) Feed(std::uint64_t{swathSteps_} * blankPasses_);
  started_ = true;
  blankPasses_ = 0;
  ++swathCount_;
  const double perUnit = 2.0 * geometry_.resFactor, factor = geometry_.resFactor;
  const double right = 4.0 * geometry_.passRight + geometry_.margin;
  const auto left150 = static_cast<std::uint32_t>(geometry_.margin / perUnit);
  const auto right150 = static_cast<std::uint32_t>(right / perUnit + geometry_.rowPad / factor);
  feedLine_ = std::min(feedLine_ + geometry_.passStep, geometry_.height);
  auto& header = headers_[(swathCount_ - 1) % 6];
  header[2] = header[4] = static_cast<std::uint8_t>(dir);
  Put(header, 8, 2, dir == 0 ? left150 : right150 + biDir_ - 32);
  Put(header, 10, 2, dir == 0 ? right150 : left150);
  Put(header, 16, 2, geometry_.passStep);
  Put(header, 20, 4, swathCount_);
  Put(header, 28, 4, swathSteps_);
  Put(header, 32, 4, feedLine_);
  take_(header, raster_.Columns());
}

// What the slot carried last goes out with a feed, too.
void PlainJob::Feed(std::uint64_t steps) {
  for (; steps > 0; steps -= std::min<std::uint64_t>(steps, 0x7FFFFFFF)) {
    ++swathCount_;
    auto& header = headers_[(swathCount_ - 1) % 6];
    Put(header, 20, 4, swathCount_);
    Put(header, 28, 4, std::min<std::uint64_t>(steps, 0x7FFFFFFF));
    take_(header, {});
  }
}

}  // namespace qrn::plain
