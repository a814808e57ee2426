// The choices of the output that the command line offers.

#ifndef CLIENT_OUTPUT_FORMAT_H
#define CLIENT_OUTPUT_FORMAT_H

#include <cstddef>

namespace topoctl {

enum class Format { kTable, kJson, kCsv };

struct TableStyle {
  bool header = true;     // of csv, too
  std::size_t width = 0;  // columns of the terminal, within which each line is cut; 0: no limit
};

// Converts from a format, with the default style.
struct OutputStyle {
  OutputStyle(Format chosen, TableStyle style = {}) : format(chosen), table(style) {}

  Format format;
  TableStyle table;
};

}  // namespace topoctl

#endif
