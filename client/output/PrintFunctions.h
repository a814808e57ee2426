// Prints what a command's calls delivered.

#ifndef CLIENT_OUTPUT_PRINTFUNCTIONS_H
#define CLIENT_OUTPUT_PRINTFUNCTIONS_H

#include <functional>
#include <iosfwd>
#include <memory>
#include <utility>

#include "client/output/Printer.h"
#include "client/output/Rows.h"

namespace topoctl {

// Prints what a command's calls delivered. All calls are made before, so that a failure leaves no
// partial output.
using PrintFunction = std::function<void(std::ostream&)>;

// The PrintFunction of a command without a result.
inline void printNothing(std::ostream&) {}

// Borrows the description.
template <typename List>
PrintFunction printer(Batches<List> batches,
                      const Description<typename DescribedRows<List>::Record>& description,
                      Format format) {
  // Shared because a std::function must be copyable; batches are not.
  const auto shared = std::make_shared<const Batches<List>>(std::move(batches));
  return [shared, &description, format](std::ostream& out) {
    print(DescribedRows<List>(*shared, description), format, out);
  };
}

// Takes ownership of the list, as of the result of a _retn().
template <typename List>
PrintFunction pairPrinter(List* list, Format format) {
  Batches<List> batches;
  batches.add(list);
  return printer(std::move(batches), pairDescription(), format);
}

// A result that is always one record. Borrows the description.
template <typename Record>
PrintFunction recordPrinter(const Record& record, const Description<Record>& description,
                            Format format) {
  return [record, &description, format](std::ostream& out) {
    printOne(DescribedRecord<Record>(record, description), format, out);
  };
}

}  // namespace topoctl

#endif
