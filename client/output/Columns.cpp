#include "client/output/Columns.h"

#include <algorithm>
#include <array>
#include <numeric>

namespace topoctl {
namespace {

constexpr std::size_t kReadableText = 16;
constexpr std::size_t kShortestText = 8;
constexpr std::size_t kShortestHeader = 5;

enum class Group { kTexts, kNumbers, kFirst };

// A step of fitting: cuts the columns of a group to a minimum. The steps follow in order until the
// line fits.
struct Step {
  Group group;
  std::size_t minimum;
};

constexpr std::array<Step, 4> kSteps = {{
    {Group::kTexts, kReadableText},
    {Group::kNumbers, kShortestHeader},
    {Group::kTexts, kShortestText},
    {Group::kFirst, kShortestText},
}};

Group groupOf(const std::vector<Column>& columns, std::size_t index) {
  if (columns[index].isNumeric) {
    return Group::kNumbers;
  }
  return index == 0 ? Group::kFirst : Group::kTexts;
}

std::size_t lineWidthOf(const std::vector<std::size_t>& widths) {
  return std::accumulate(widths.begin(), widths.end(), kColumnGap * (widths.size() - 1));
}

// The widths with the columns of the group cut to `limit`.
std::vector<std::size_t> cutGroup(const std::vector<Column>& columns,
                                  std::vector<std::size_t> widths, Group group, std::size_t limit) {
  for (std::size_t i = 0; i < columns.size(); ++i) {
    if (groupOf(columns, i) == group) {
      const std::size_t uncuttable = columns[i].isNumeric ? columns[i].content : 0;
      widths[i] = std::min(widths[i], std::max(limit, uncuttable));
    }
  }
  return widths;
}

}  // namespace

std::vector<std::size_t> fitColumns(const std::vector<Column>& columns, std::size_t lineWidth) {
  std::vector<std::size_t> widths;
  widths.reserve(columns.size());
  for (const Column& column : columns) {
    widths.push_back(column.width());
  }
  for (const Step& step : kSteps) {
    for (std::size_t limit = std::max(lineWidth, step.minimum);
         lineWidthOf(widths) > lineWidth && limit >= step.minimum; --limit) {
      widths = cutGroup(columns, std::move(widths), step.group, limit);
    }
  }
  return widths;
}

}  // namespace topoctl
