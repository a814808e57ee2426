#include "client/output/Table.h"

#include <algorithm>
#include <ostream>
#include <string_view>

#include "client/base/Utf8.h"
#include "client/output/Columns.h"

namespace topoctl {
namespace {

using globaldefs::NVSList_T;

// Without a limit of the line a longer text leaves its own row unaligned, and no other row.
constexpr std::size_t kMaxAligned = 60;

std::string pairText(std::string_view name, std::string_view value) {
  return escapeControls(name) + "=" + escapeControls(value);
}

// The last pair identifies the object among its siblings; the pairs before are its ancestors.
std::string nameText(const NVSList_T& pairs) {
  if (pairs.length() == 0) {
    return "";
  }
  const auto& last = pairs[pairs.length() - 1];
  return pairText(last.name.in(), last.value.in());
}

std::string informationText(const NVSList_T& pairs) {
  std::string text;
  forEachPair(pairs, [&text](std::string_view name, std::string_view value) {
    text += (text.empty() ? "" : "; ") + pairText(name, value);
  });
  return text;
}

bool isNumber(const Value& value) {
  return std::holds_alternative<std::int64_t>(value) ||
         std::holds_alternative<std::uint64_t>(value);
}

class Table {
 public:
  Table(const Rows& rows, const TableStyle& style) : cuts_(style.width > 0) {
    for (const std::string_view field : rows.fieldNames()) {
      Column column;
      column.header = style.header ? displayWidth(field) : 0;
      columns_.push_back(column);
    }
    bool isEmpty = true;
    rows.forEach([&](const Rows::Row& row) {
      measure(row);
      isEmpty = false;
    });
    setWidths(style.width, isEmpty);
  }

  void printHeader(const std::vector<std::string_view>& fields, std::ostream& out) const {
    std::string line;
    for (std::size_t i = 0; i < fields.size(); ++i) {
      add(line, i, cuts_ ? cutEnd(fields[i], widths_[i]) : std::string(fields[i]));
    }
    print(line, out);
  }

  void printRow(const Rows::Row& row, std::ostream& out) const {
    std::string line;
    for (std::size_t i = 0; i < row.size(); ++i) {
      add(line, i, cellText(row[i], widths_[i]));
    }
    print(line, out);
  }

 private:
  void measure(const Rows::Row& row) {
    for (std::size_t i = 0; i < row.size(); ++i) {
      Column& column = columns_[i];
      column.content = std::max(column.content, displayWidth(tableText(row[i])));
      column.isNumeric = column.isNumeric && isNumber(row[i]);
    }
  }

  void setWidths(std::size_t lineWidth, bool isEmpty) {
    if (isEmpty) {
      for (Column& column : columns_) {
        column.isNumeric = false;
      }
    }
    if (cuts_) {
      widths_ = fitColumns(columns_, lineWidth);
      return;
    }
    for (const Column& column : columns_) {
      widths_.push_back(std::max(column.header, std::min(column.content, kMaxAligned)));
    }
  }

  // Cuts a name at its begin, because the value follows the class.
  std::string cellText(const Value& value, std::size_t width) const {
    std::string text = tableText(value);
    if (!cuts_ || isNumber(value)) {
      return text;
    }
    return std::holds_alternative<NamePairs>(value) ? cutBegin(text, width) : cutEnd(text, width);
  }

  void add(std::string& line, std::size_t index, const std::string& text) const {
    const std::size_t width = displayWidth(text);
    const std::string padding(width < widths_[index] ? widths_[index] - width : 0, ' ');
    line += index == 0 ? "" : std::string(kColumnGap, ' ');
    line += columns_[index].isNumeric ? padding + text : text + padding;
  }

  static void print(std::string& line, std::ostream& out) {
    line.erase(line.find_last_not_of(' ') + 1);
    out << line << '\n';
  }

  const bool cuts_;
  std::vector<Column> columns_;
  std::vector<std::size_t> widths_;
};

}  // namespace

std::string tableText(const Value& value) {
  return std::visit(
      Overloaded{[](Unknown) { return std::string("?"); },
                 [](bool truth) { return std::string(truth ? "yes" : "no"); },
                 [](std::int64_t number) { return std::to_string(number); },
                 [](std::uint64_t number) { return std::to_string(number); },
                 [](std::string_view text) { return escapeControls(text); },
                 [](NamePairs name) { return nameText(*name.pairs); },
                 [](InfoPairs information) { return informationText(*information.pairs); }},
      value);
}

void printTable(const Rows& rows, const TableStyle& style, std::ostream& out) {
  const Table table(rows, style);
  if (style.header) {
    table.printHeader(rows.fieldNames(), out);
  }
  rows.forEach([&](const Rows::Row& row) { table.printRow(row, out); });
}

}  // namespace topoctl
