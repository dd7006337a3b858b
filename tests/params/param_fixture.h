// A job and a good parameter block that a test changes in one place.
#ifndef QRN_TESTS_PARAMS_PARAM_FIXTURE_H_
#define QRN_TESTS_PARAMS_PARAM_FIXTURE_H_

#include <array>

#include "params/printer_params.h"
#include "platform/bytes.h"
#include "raster/job_memory.h"
#include "support/job_fixture.h"

class ParamFixture : public JobFixture {
 protected:
  ParamFixture() {
    job.nResX = 1440;
    job.nResY = 360;
    job.nColors = 8;
    job.nBitsPerPixel = 2;
    job.nLineBits = 6000;
    job.nHeight = 720;
    block[0] = 120;
    block[41] = 30, block[42] = 31, block[43] = 33, block[44] = 34;  // Db
    block[45] = 9, block[46] = 1, block[47] = 2, block[48] = 3,
    block[49] = 4;                                                   // vertical head offset
    block[50] = 11, block[51] = 12, block[52] = 13, block[53] = 14;  // head distance
    block[72] = 0xEC, block[77] = 0x09;                              // 2540
    block[82] = 10;
    block[90] = 0x30;
    block[91] = 1;
    qrn::PutU32(&block[128], 72001);
    qrn::PutU16(&block[204], 0x5213);
  }
  ~ParamFixture() override { qrn::FreeJobMem(job); }

  bool Parse() { return qrn::ParsePrinterParams(job, block.data(), 208); }

  std::array<std::uint8_t, 208> block{};
};

#endif  // QRN_TESTS_PARAMS_PARAM_FIXTURE_H_
