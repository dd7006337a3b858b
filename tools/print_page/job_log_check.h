// Whether the driver's log of a job is whole: the driver itself keeps silent when it cannot write.
#ifndef QRN_TOOLS_PRINT_PAGE_JOB_LOG_CHECK_H_
#define QRN_TOOLS_PRINT_PAGE_JOB_LOG_CHECK_H_

#include <filesystem>
#include <set>
#include <string>

namespace qrn::tool {

class JobLogCheck {
 public:
  // Before the job. `folder`: where the logs go; "" = none are asked for.
  explicit JobLogCheck(const std::string& folder);
  // After it: what is wrong with its log; "" when it ends in its last line.
  std::string Problem() const;

 private:
  std::set<std::filesystem::path> Files() const;

  std::string folder_;
  std::set<std::filesystem::path> before_;
};

}  // namespace qrn::tool

#endif  // QRN_TOOLS_PRINT_PAGE_JOB_LOG_CHECK_H_
