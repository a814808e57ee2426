#ifndef AGENT_BUNDLE_MODULEERROR_H
#define AGENT_BUNDLE_MODULEERROR_H

#include <stdexcept>

namespace agent {

// The reason why the module cannot be loaded or started: one line with the file. A plain value.
class ModuleError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace agent

#endif
