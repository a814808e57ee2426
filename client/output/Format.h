#ifndef CLIENT_OUTPUT_FORMAT_H
#define CLIENT_OUTPUT_FORMAT_H

namespace topoctl {

enum class Format { kTable, kJson, kCsv };

}  // namespace topoctl

#endif
