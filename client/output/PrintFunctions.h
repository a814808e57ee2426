// Functions that print the result of a command. Thread-safety: none.

#ifndef CLIENT_OUTPUT_PRINTFUNCTIONS_H
#define CLIENT_OUTPUT_PRINTFUNCTIONS_H

#include <functional>
#include <iosfwd>
#include <memory>
#include <utility>

#include "client/output/Printer.h"
#include "client/output/Rows.h"

namespace topoctl {

// Owns the result of a command and prints the result to the stream. A command returns its
// PrintFunction after the last call to the agent, so that a failed call leaves no partial output.
// Exceptions of the stream pass.
using PrintFunction = std::function<void(std::ostream&)>;

// The PrintFunction of a command without a result.
inline void printNothing(std::ostream&) {}

// Prints one record a row. Borrows the fields.
template <typename List>
PrintFunction listPrinter(Batches<List> batches,
                          const RecordFields<typename ListRows<List>::Record>& fields,
                          const OutputStyle& style) {
  // Shared: a std::function must be copyable, but batches are not.
  const auto shared = std::make_shared<const Batches<List>>(std::move(batches));
  return [shared, &fields, style](std::ostream& out) {
    printRows(ListRows<List>(*shared, fields), style, out);
  };
}

// Takes ownership of a list, such as the result of _retn().
template <typename List>
PrintFunction pairPrinter(List* list, const OutputStyle& style) {
  Batches<List> batches;
  batches.add(list);
  return listPrinter(std::move(batches), pairFields(), style);
}

// For a command whose result is always one record. Borrows the fields.
template <typename Record>
PrintFunction recordPrinter(const Record& record, const RecordFields<Record>& fields,
                            const OutputStyle& style) {
  return [record, &fields, style](std::ostream& out) {
    printRecord(RecordRow<Record>(record, fields), style, out);
  };
}

}  // namespace topoctl

#endif
