// The three output formats; docs/topoctl.md describes them.

#ifndef CLIENT_OUTPUT_PRINTER_H
#define CLIENT_OUTPUT_PRINTER_H

#include <iosfwd>
#include <string>

#include "client/output/Format.h"
#include "client/output/Rows.h"

namespace topoctl {

// Every format writes valid UTF-8; the table also keeps the terminal safe from what texts contain.
void print(const Rows& rows, Format format, std::ostream& out);

// For a result that is always one record: in json that object alone, not an array of it.
void printOne(const Rows& record, Format format, std::ostream& out);

// A name by its last value, pairs as name=value; name=value.
std::string tableText(const Value& value);

}  // namespace topoctl

#endif
