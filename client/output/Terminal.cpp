#include "client/output/Terminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include "client/base/Decimal.h"

namespace topoctl {

std::size_t terminalWidth(int descriptor, const char* columns) {
  if (isatty(descriptor) != 1) {
    return 0;
  }
  const auto fixed = columns == nullptr ? std::nullopt : parseDecimal<std::size_t>(columns);
  if (fixed) {
    return *fixed;
  }
  winsize size{};
  return ioctl(descriptor, TIOCGWINSZ, &size) == 0 ? size.ws_col : 0;
}

}  // namespace topoctl
