#include "client/output/Printer.h"

#include <algorithm>
#include <ostream>
#include <string>
#include <string_view>

#include "client/base/Utf8.h"
#include "client/output/Json.h"

namespace topoctl {
namespace {

using globaldefs::NVSList_T;

constexpr std::string_view kColumnGap = "  ";

// ---- json

void writeObject(const std::vector<std::string_view>& fields, const Rows::Row& row,
                 std::ostream& out) {
  Json record = Json::object();
  for (std::size_t i = 0; i < row.size(); ++i) {
    record[std::string(fields[i])] = toJson(row[i]);
  }
  out << record.dump();
}

void printJson(const Rows& rows, std::ostream& out) {
  const auto fields = rows.fieldNames();
  const char* separator = "\n";
  out << '[';
  rows.forEach([&](const Rows::Row& row) {
    out << separator;
    writeObject(fields, row, out);
    separator = ",\n";
  });
  const bool empty = *separator == '\n';
  out << (empty ? "]\n" : "\n]\n");
}

// ---- csv, RFC 4180

std::string escapeNotation(std::string_view text) {
  std::string escaped;
  for (const char c : text) {
    if (c == '\\' || c == '=' || c == ';') {
      escaped += '\\';
    }
    escaped += c;
  }
  return escaped;
}

// name=value;name=value, with a backslash before each \ = ; of a name or a value.
std::string csvPairs(const NVSList_T& pairs) {
  std::string text;
  forEachPair(pairs, [&text](std::string_view name, std::string_view value) {
    text += (text.empty() ? "" : ";") + escapeNotation(name) + "=" + escapeNotation(value);
  });
  return validUtf8(text);
}

std::string csvText(const Value& value) {
  return std::visit(Overloaded{[](Unknown) { return std::string(); },
                               [](bool truth) { return std::string(truth ? "true" : "false"); },
                               [](std::int64_t number) { return std::to_string(number); },
                               [](std::uint64_t number) { return std::to_string(number); },
                               [](std::string_view text) { return validUtf8(text); },
                               [](NamePairs name) { return csvPairs(*name.pairs); },
                               [](InfoPairs information) { return csvPairs(*information.pairs); }},
                    value);
}

std::string csvQuoted(const std::string& text) {
  if (text.find_first_of(",\"\r\n") == std::string::npos) {
    return text;
  }
  std::string quoted = "\"";
  for (const char c : text) {
    quoted += c == '"' ? "\"\"" : std::string(1, c);
  }
  return quoted + '"';
}

void printCsv(const Rows& rows, std::ostream& out) {
  const char* separator = "";
  for (const std::string_view field : rows.fieldNames()) {
    out << separator << field;
    separator = ",";
  }
  out << "\r\n";
  rows.forEach([&out](const Rows::Row& row) {
    for (std::size_t i = 0; i < row.size(); ++i) {
      out << (i == 0 ? "" : ",") << csvQuoted(csvText(row[i]));
    }
    out << "\r\n";
  });
}

// ---- table

// The last pair identifies the object among its siblings; the pairs before are its ancestors.
std::string tableName(const NVSList_T& pairs) {
  return pairs.length() == 0 ? "" : escapeControls(pairs[pairs.length() - 1].value.in());
}

std::string tablePairs(const NVSList_T& pairs) {
  std::string text;
  forEachPair(pairs, [&text](std::string_view name, std::string_view value) {
    text += (text.empty() ? "" : "; ") + escapeControls(name) + "=" + escapeControls(value);
  });
  return text;
}

bool isNumber(const Value& value) {
  return std::holds_alternative<std::int64_t>(value) ||
         std::holds_alternative<std::uint64_t>(value);
}

struct Cell {
  std::string text;
  bool rightAligned;
};

class Table {
 public:
  explicit Table(const Rows& rows) {
    for (const std::string_view field : rows.fieldNames()) {
      widths_.push_back(displayWidth(field));
    }
    rows.forEach([this](const Rows::Row& row) { measure(row); });
  }

  void printHeader(const std::vector<std::string_view>& fields, std::ostream& out) const {
    std::vector<Cell> cells;
    for (std::size_t i = 0; i < fields.size(); ++i) {
      cells.push_back({std::string(fields[i]), isNumeric(i)});
    }
    printLine(cells, out);
  }

  void printRow(const Rows::Row& row, std::ostream& out) const {
    std::vector<Cell> cells;
    for (std::size_t i = 0; i < row.size(); ++i) {
      cells.push_back({tableText(row[i]), isNumeric(i)});
    }
    printLine(cells, out);
  }

 private:
  bool isNumeric(std::size_t column) const { return column < numeric_.size() && numeric_[column]; }

  void measure(const Rows::Row& row) {
    numeric_.resize(row.size(), true);
    for (std::size_t i = 0; i < row.size(); ++i) {
      widths_[i] = std::max(widths_[i], displayWidth(tableText(row[i])));
      numeric_[i] = numeric_[i] && isNumber(row[i]);
    }
  }

  void printLine(const std::vector<Cell>& cells, std::ostream& out) const {
    std::string line;
    for (std::size_t i = 0; i < cells.size(); ++i) {
      const std::string padding(widths_[i] - displayWidth(cells[i].text), ' ');
      line += i == 0 ? "" : kColumnGap;
      line += cells[i].rightAligned ? padding + cells[i].text : cells[i].text + padding;
    }
    line.erase(line.find_last_not_of(' ') + 1);
    out << line << '\n';
  }

  std::vector<std::size_t> widths_;
  std::vector<bool> numeric_;  // whether a column contains only numbers; empty without rows
};

void printTable(const Rows& rows, std::ostream& out) {
  const Table table(rows);
  table.printHeader(rows.fieldNames(), out);
  rows.forEach([&](const Rows::Row& row) { table.printRow(row, out); });
}

}  // namespace

std::string tableText(const Value& value) {
  return std::visit(
      Overloaded{[](Unknown) { return std::string("?"); },
                 [](bool truth) { return std::string(truth ? "yes" : "no"); },
                 [](std::int64_t number) { return std::to_string(number); },
                 [](std::uint64_t number) { return std::to_string(number); },
                 [](std::string_view text) { return escapeControls(text); },
                 [](NamePairs name) { return tableName(*name.pairs); },
                 [](InfoPairs information) { return tablePairs(*information.pairs); }},
      value);
}

void printRows(const Rows& rows, Format format, std::ostream& out) {
  switch (format) {
    case Format::kTable:
      return printTable(rows, out);
    case Format::kJson:
      return printJson(rows, out);
    case Format::kCsv:
      return printCsv(rows, out);
  }
}

void printRecord(const Rows& record, Format format, std::ostream& out) {
  if (format != Format::kJson) {
    printRows(record, format, out);
    return;
  }
  record.forEach([&](const Rows::Row& row) { writeObject(record.fieldNames(), row, out); });
  out << '\n';
}

}  // namespace topoctl
