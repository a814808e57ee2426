// The widths of the columns of a table.

#ifndef CLIENT_OUTPUT_COLUMNS_H
#define CLIENT_OUTPUT_COLUMNS_H

#include <algorithm>
#include <cstddef>
#include <vector>

namespace topoctl {

// All widths are terminal columns.
struct Column {
  std::size_t header = 0;
  std::size_t content = 0;  // of the widest cell
  bool isNumeric = true;    // only numbers, which are never cut

  std::size_t width() const { return std::max(header, content); }
};

constexpr std::size_t kColumnGap = 2;

// Returns the width of each column, so that a line has at most `lineWidth` columns. Cuts the widest
// columns of texts first, then the headers of numbers, and the first column, which names the
// object, last. A table with many columns may remain wider than the line. Thread-safety: any
// thread.
std::vector<std::size_t> fitColumns(const std::vector<Column>& columns, std::size_t lineWidth);

}  // namespace topoctl

#endif
