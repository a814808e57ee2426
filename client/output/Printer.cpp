#include "client/output/Printer.h"

#include <ostream>
#include <string>
#include <string_view>

#include "client/base/Utf8.h"
#include "client/output/Json.h"
#include "client/output/Table.h"

namespace topoctl {
namespace {

using globaldefs::NVSList_T;

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

void printCsvHeader(const Rows& rows, std::ostream& out) {
  const char* separator = "";
  for (const std::string_view field : rows.fieldNames()) {
    out << separator << field;
    separator = ",";
  }
  out << "\r\n";
}

void printCsv(const Rows& rows, bool header, std::ostream& out) {
  if (header) {
    printCsvHeader(rows, out);
  }
  rows.forEach([&out](const Rows::Row& row) {
    for (std::size_t i = 0; i < row.size(); ++i) {
      out << (i == 0 ? "" : ",") << csvQuoted(csvText(row[i]));
    }
    out << "\r\n";
  });
}

}  // namespace

void printRows(const Rows& rows, const OutputStyle& style, std::ostream& out) {
  switch (style.format) {
    case Format::kTable:
      return printTable(rows, style.table, out);
    case Format::kJson:
      return printJson(rows, out);
    case Format::kCsv:
      return printCsv(rows, style.table.header, out);
  }
}

void printRecord(const Rows& record, const OutputStyle& style, std::ostream& out) {
  if (style.format != Format::kJson) {
    printRows(record, style, out);
    return;
  }
  record.forEach([&](const Rows::Row& row) { writeObject(record.fieldNames(), row, out); });
  out << '\n';
}

}  // namespace topoctl
