#include "agent/store/NetworkStore.h"

#include "agent/base/PrintableText.h"

namespace agent {

StoreError::StoreError(const std::string& path, const std::string& reason)
    : std::runtime_error(printable(path, 4096) + ": " + printable(reason)) {}

}  // namespace agent
