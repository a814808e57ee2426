// The output formats table, json and csv as docs/topoctl.md describes them.
// Thread-safety of all functions: any thread. Exceptions of the stream pass.

#ifndef CLIENT_OUTPUT_PRINTER_H
#define CLIENT_OUTPUT_PRINTER_H

#include <iosfwd>

#include "client/output/Format.h"
#include "client/output/Rows.h"

namespace topoctl {

// Writes valid UTF-8 in every format, and in a table no control characters.
void printRows(const Rows& rows, const OutputStyle& style, std::ostream& out);

// For a result that is always one record: json has an object instead of an array.
void printRecord(const Rows& record, const OutputStyle& style, std::ostream& out);

}  // namespace topoctl

#endif
