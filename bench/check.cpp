#include "bench/check.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "bench/measure.h"
#include "job/heads.h"
#include "params/connect.h"
#include "params/param_block.h"
#include "raster/pass_rows.h"
#include "raster/pass_size.h"

namespace qrn::bench {

plain::JobDesc DescOf(const Job& job) {
  return {job.nResX, job.nResY, job.nLineBits, job.nHeight, job.nColors, job.nBitsPerPixel};
}

plain::Geometry GeometryOf(const Job& job) {
  return plain::GeometryOf(GetPrinterParams().bytes, DescOf(job));
}

void CheckPass(const std::string& where, const Job& job, const plain::PlainRaster& plain,
               bool printed) {
  const std::string pass = where + ", pass " + std::to_string(job.passNo - 1);
  if (printed != (job.passEmpty == 0)) Fail(pass, "blank or not differs");
  if (!printed) return;
  const auto& columns = plain.Columns();
  if (columns.size() != SwathDataSize(job)) Fail(pass, "size differs");
  const auto differ = std::mismatch(columns.begin(), columns.end(), job.PrintOutBuf);
  if (differ.first != columns.end())
    Fail(pass, "columns differ from byte " + std::to_string(differ.first - columns.begin()));
}

void CheckRows(const std::string& where, const Job& job, plain::PlainRaster& plain) {
  std::vector<std::uint8_t> line(job.lineStride);
  for (std::uint32_t color = 0; color < kColors; ++color) {
    for (std::uint32_t row = 0; row < job.Mem.layout.rows; ++row) {
      LoadRow(job, color, row, line.data());
      if (std::memcmp(line.data(), plain.Row(color, row), line.size()) != 0)
        Fail(where, "row " + std::to_string(row) + " of color " + std::to_string(color));
    }
  }
}

}  // namespace qrn::bench
