// The record of the job as a transcript tells it.
#ifndef QRN_TESTS_SCENARIOS_RECORD_H_
#define QRN_TESTS_SCENARIOS_RECORD_H_

#include <string>
#include <utility>
#include <vector>

namespace scenarios {

// Names and values of what stands in the record now, always the same names in the same order; none
// where the library under test is a file of its own, which shows no record.
std::vector<std::pair<std::string, std::string>> RecordFields();

}  // namespace scenarios

#endif  // QRN_TESTS_SCENARIOS_RECORD_H_
