// Reports a failure code of a platform call as a ProcessException.

#ifndef TOPO_PLATFORMFAILURE_H
#define TOPO_PLATFORMFAILURE_H

#include <string>

#include "platform/framework/ProcessException.h"
#include "topo/Log.h"

namespace topo {

// Fills an empty exception with a failure code, a log site and a message, and passes the exception
// to NbiException. The caller throws the exception afterwards. Thread-safety: any thread.
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
