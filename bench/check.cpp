#include "bench/check.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "bench/measure.h"
#include "raster/pass_rows.h"
#include "raster/pass_size.h"

namespace qrn::bench {

void CheckPass(const std::string& where, const Job& job, const plain::PlainRaster& plain) {
  const Job& wanted = plain.Record();
  const std::string pass = where + ", pass " + std::to_string(wanted.passNo - 1);
  if (job.passNo != wanted.passNo || job.passDir != wanted.passDir) Fail(pass, "out of step");
  if (job.passEmpty != wanted.passEmpty) Fail(pass, "blank or not differs");
  if (wanted.passEmpty == 1) return;
  if (job.passDataSize != wanted.passDataSize || job.passLeftByte != wanted.passLeftByte ||
      job.passRightByte != wanted.passRightByte || job.passBits != wanted.passBits)
    Fail(pass, "size or range differs");
  const std::uint8_t* const end = plain.PrintOut() + SwathDataSize(job);
  const auto differ = std::mismatch(plain.PrintOut(), end, job.PrintOutBuf);
  if (differ.first != end)
    Fail(pass, "columns differ from byte " + std::to_string(differ.first - plain.PrintOut()));
}

void CheckRows(const std::string& where, const Job& job, plain::PlainRaster& plain) {
  std::vector<std::uint8_t> line(job.lineStride);
  for (std::uint32_t plane = 0; plane < kPlanes; ++plane) {
    for (std::uint32_t row = 0; row < plain.Rows(); ++row) {
      LoadRow(job, plane, row, line.data());
      if (std::memcmp(line.data(), plain.Row(plane, row), line.size()) != 0)
        Fail(where, "row " + std::to_string(row) + " of plane " + std::to_string(plane));
    }
  }
}

}  // namespace qrn::bench
