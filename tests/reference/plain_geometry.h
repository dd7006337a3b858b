// What the plain raster knows of the machine and the image: its own derivation from the printer's
// parameter block, number by number, which shares nothing with the core's.
#ifndef QRN_TESTS_REFERENCE_PLAIN_GEOMETRY_H_
#define QRN_TESTS_REFERENCE_PLAIN_GEOMETRY_H_

#include <cstdint>

namespace qrn::plain {

constexpr std::uint32_t kBlockBytes = 208, kUpdateAt = 8, kUpdateBytes = 70;
constexpr std::uint32_t kColors = 8, kSlots = 8, kJets = 180;  // jets: nozzles of a row

struct JobDesc {
  std::uint32_t resX, resY, lineBits, height, colors = 8, bitsPerPixel = 2;
};

struct Geometry {
  int error;  // DriverError that the job ends with; 0 = the resolution, which raises none
  bool accepted;
  bool twoHeads, mirrored, bidirectional;
  std::uint32_t fixedDir, singleHead;  // singleHead: 0 PHA, 1 PHB, 4 neither
  std::uint8_t ink[4][kSlots];
  std::uint32_t lineBits, height, lineStride, lineBytes;  // lineBytes: whole ones
  std::uint32_t passCount, passStep, bandLines, firstLineRow, checkRows, rows;
  std::uint32_t columnPixels;  // of a line, that make up one column
  std::uint32_t featherRows, headGapX, headGapY, rowOffset[kSlots];
  std::uint32_t speed, margin, maxPrintMm;  // margin: dots
  std::uint32_t passRight, rowPad, swathBytes;
  float resFactor;
};
Geometry GeometryOf(const std::uint8_t* block, const JobDesc& desc);

// Low 16 bits of the motor steps of `lines` lines; calib is not 0.
std::uint16_t StepsOf(std::uint32_t lines, std::uint32_t stepBase, std::uint32_t calib,
                      std::uint32_t resY);
std::uint32_t ResolutionIndexOf(std::uint32_t resX);  // 4 for one that is not printed
std::uint32_t CalibrationOf(const std::uint8_t* block);
std::uint32_t Word(const std::uint8_t* bytes, int count);  // little-endian

}  // namespace qrn::plain

#endif  // QRN_TESTS_REFERENCE_PLAIN_GEOMETRY_H_
