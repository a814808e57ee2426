// A failed platform call that has no exception of its own yet.

#ifndef TOPO_PLATFORMFAILURE_H
#define TOPO_PLATFORMFAILURE_H

#include <string>

#include "platform/framework/ProcessException.h"
#include "topo/Log.h"

namespace topo {

// Fills a fresh exception with the code of the failure and where it was met, and reports it to the
// agent at that position. Throwing it is the caller's.
inline void reportFailure(ProcessException& failure, const LogSite& site, std::int32_t code,
                          const std::string& message) {
  failure.errorCode = code;
  failure.file << site.file;
  failure.function << kUnknownFunction;
  failure.line = site.line;
  failure.detail << "ErrCode:" << code << ",Detail:" << message;
  setLogPosition(site);
  NS_CORBA::NbiException(failure);
}

}  // namespace topo

#endif
