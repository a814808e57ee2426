#include "client/base/Failure.h"

#include <ostream>

#include "client/base/Utf8.h"

namespace topoctl {

int report(const Failure& failure, std::ostream& err) {
  if (failure.code() != ExitCode::kOutputClosed) {
    err << "topoctl: " + escapeControls(failure.what()) + "\n" << std::flush;
  }
  return static_cast<int>(failure.code());
}

}  // namespace topoctl
