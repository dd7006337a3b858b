// The print heads, PHA and PHB, and how the printer and the job's record name them.
#ifndef QRN_JOB_HEADS_H_
#define QRN_JOB_HEADS_H_

#include <cstdint>

namespace qrn {

constexpr std::uint32_t kColors = 8;                             // inks of a job
constexpr std::uint32_t kNozzleRows = 8;                         // of a head
constexpr std::uint32_t kBothHeadsNozzleRows = 2 * kNozzleRows;  // of both heads, PHA's first
constexpr std::uint32_t kNozzles = 180;                          // of a row
constexpr std::uint32_t kHeadLines = 2 * kNozzles;               // raster lines that a head covers

// Rows of the pass buffers that two heads cover, one below the other: as many precede a new band,
// and as many move on with it, whatever the band's height is.
constexpr std::uint32_t kBothHeadsRows = 2 * kHeadLines;

// Job::headMask: the heads in use.
constexpr std::uint8_t kHeadPha = 0x10;
constexpr std::uint8_t kHeadPhb = 0x20;
constexpr std::uint8_t kHeadsBoth = kHeadPha | kHeadPhb;

// Job::singleHead: the only head in use.
enum SingleHead : std::uint8_t { kSinglePha = 0, kSinglePhb = 1, kSingleUnknown = 4 };

}  // namespace qrn

#endif  // QRN_JOB_HEADS_H_
