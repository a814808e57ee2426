// The three output formats; docs/topoctl.md describes them.

#ifndef CLIENT_PRINTER_H
#define CLIENT_PRINTER_H

#include <iosfwd>

#include "client/Options.h"
#include "client/Records.h"

namespace topoctl {

// Every format writes valid UTF-8; the table also keeps the terminal safe from what texts contain.
void print(const Rows& rows, Format format, std::ostream& out);

}  // namespace topoctl

#endif
