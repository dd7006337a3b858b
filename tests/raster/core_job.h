// A job in the core without its threads: the test makes the host's calls and plays the transmit
// thread, wherever the host's thread waits for it and whenever it likes.
#ifndef QRN_TESTS_RASTER_CORE_JOB_H_
#define QRN_TESTS_RASTER_CORE_JOB_H_

#include <algorithm>
#include <functional>
#include <iterator>
#include <vector>

#include "params/connect.h"
#include "protocol/swath_header.h"
#include "raster/job_memory.h"
#include "raster/kernels.h"
#include "raster/line_intake.h"
#include "raster/swath_builder.h"
#include "raster/swath_queue.h"
#include "reference/plain_geometry.h"
#include "support/job_fixture.h"

// A machine with two heads and nothing out of the ordinary; tests change what they are about.
inline std::vector<std::uint8_t> GoodBlock() {
  std::vector<std::uint8_t> block(qrn::plain::kBlockBytes);
  block[41] = block[42] = block[43] = block[44] = 32;  // no shift in reverse
  block[72] = 0xEC, block[77] = 0x09;                  // calibration 2540
  block[82] = 10;
  block[90] = 0x30, block[91] = 1;
  block[128] = 0x41, block[129] = 0x19, block[130] = 1;  // 72001 steps
  block[204] = 0x13, block[205] = 0x52;
  return block;
}

class CoreJob : public JobFixture {
 protected:
  ~CoreJob() override {
    qrn::FreeJobMem(job);
    qrn::UseKernel(*qrn::Kernels().front());
  }

  bool Connect(const std::uint8_t* block, const qrn::plain::JobDesc& desc) {
    qrn::FreeJobMem(job);
    qrn::Job next{};
    next.bLogOn = job.bLogOn;
    std::copy(std::begin(job.szLogFile), std::end(job.szLogFile), next.szLogFile);
    job = next;
    job.nSwathLimit = UINT32_MAX;
    job.bTxRun = 1;
    job.nResX = static_cast<std::uint16_t>(desc.resX);
    job.nResY = static_cast<std::uint16_t>(desc.resY);
    job.nLineBits = desc.lineBits;
    job.nHeight = desc.height;
    job.nColors = static_cast<std::uint8_t>(desc.colors);
    job.nBitsPerPixel = desc.bitsPerPixel;
    platform.onSleep = [this] { TakeReady(); };
    return qrn::ParsePrinterParams(job, block, qrn::plain::kBlockBytes);
  }

  void TakeReady() {
    while (qrn::Swath* swath = qrn::QueueGetReady(job)) {
      std::uint8_t header[qrn::kSwathHeaderBytes];
      qrn::EncodeSwathHeader(swath->header, header);
      onSwath(header, swath->pSwathData, swath->dataSize);
      qrn::SetSwathState(swath, qrn::kSwathFree);
    }
  }

  std::function<void(const std::uint8_t* header, const std::uint8_t* data, std::size_t bytes)>
      onSwath;
};

#endif  // QRN_TESTS_RASTER_CORE_JOB_H_
