// What the log says that one head cannot print, in numbers counted line by line on the plain raster
// in the passes that the lines of a band come under, for feathered bands by hand.
#include <string>
#include <vector>

#include "raster/core_job.h"

namespace qrn {
namespace {

using OneHead = CoreJob;

struct Band {
  std::uint32_t resX, resY;
  std::uint8_t feather, bidirectional;
  const char* said;  // "" = all of it is printed
};

TEST_F(OneHead, LogsWhichLinesOfEveryBandItLoses) {
  std::vector<std::uint8_t> block = GoodBlock();
  block[90] = 0x10;
  block[91] = 0;
  for (std::uint8_t row = 0; row < 8; ++row) block[9u + row] = row;
  for (const Band& band : {
           Band{1440, 360, 10, 0, "344 lines 0 are not printed, 6 in part\r"},
           Band{1080, 360, 10, 1, "348 lines 0 are not printed, 18 in part\r"},
           Band{1620, 360, 50, 1, "276 lines 0 are not printed, 18 in part\r"},
           Band{2160, 360, 10, 1, "352 lines 0 are not printed, 30 in part\r"},
           // Forward passes with an even step meet each line that they meet at all twice.
           Band{1080, 360, 10, 0, "348 lines 174 are not printed, 0 in part\r"},
           Band{1080, 361, 0, 0, ""},
           Band{1080, 720, 0, 0, "366 lines 0 are not printed, 18 in part\r"},
           Band{1080, 721, 0, 0, "366 lines 1 are not printed, 18 in part\r"},
           Band{1440, 800, 0, 0, "368 lines 224 are not printed, 0 in part\r"},
           Band{1620, 800, 0, 0, "372 lines 80 are not printed, 21 in part\r"},
           Band{2160, 1000, 0, 0, "368 lines 280 are not printed, 0 in part\r"},
           Band{1080, 1086, 0, 0, "366 lines 366 are not printed, 0 in part\r"},
       }) {
    block[109] = band.feather;
    block[83] = band.bidirectional;
    EXPECT_TRUE(Connect(block.data(), {band.resX, band.resY, 2 * 480, 720}));
    const std::string log = TakeLog(), line = "One head: of every ";
    const std::size_t at = log.find(line);
    const std::string said = at == std::string::npos ? "" : log.substr(at + line.size());
    EXPECT_EQ(band.said, said.substr(0, said.find('\n'))) << band.resX << " x " << band.resY;
  }
}

}  // namespace
}  // namespace qrn
