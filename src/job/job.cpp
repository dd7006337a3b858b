#include "job/job.h"

namespace qrn {

Job& GetJob() {
  static constinit Job job{};
  return job;
}

}  // namespace qrn
