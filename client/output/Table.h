// The output format table as docs/topoctl.md describes it.

#ifndef CLIENT_OUTPUT_TABLE_H
#define CLIENT_OUTPUT_TABLE_H

#include <iosfwd>
#include <string>

#include "client/output/Format.h"
#include "client/output/Rows.h"

namespace topoctl {

// Writes valid UTF-8 without control characters. Thread-safety: any thread. Exceptions of the
// stream pass.
void printTable(const Rows& rows, const TableStyle& style, std::ostream& out);

// A value as the text of a cell: of a name the last pair as CLASS=VALUE, of information name=value;
// name=value. Thread-safety: any thread.
std::string tableText(const Value& value);

}  // namespace topoctl

#endif
