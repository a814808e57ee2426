// The publication of a service interface for modules.

#ifndef AGENT_HOST_PUBLICATION_H
#define AGENT_HOST_PUBLICATION_H

#include "platform/bundlemgr/ServiceInterface.h"

namespace agent {

// Publishes an interface under a name for as long as the Publication lives.
//
// Thread-safety: constructed and destroyed while no module looks for the interface. Ownership:
// borrows the interface. Errors: std::bad_alloc.
class Publication {
 public:
  Publication(const char* name, NS_BUNDLEMGR1::ServiceInterface& service)
      : service_(service), buffer_(publish(name)) {}

  ~Publication() { buffer_->Remove(&service_); }

  Publication(const Publication&) = delete;
  Publication& operator=(const Publication&) = delete;

 private:
  NS_BUNDLEMGR1::InterfaceBuffer* publish(const char* name) {
    NS_BUNDLEMGR1::SetIFBuf(name, &service_);
    return NS_BUNDLEMGR1::CheckIFBuf(name);
  }

  NS_BUNDLEMGR1::ServiceInterface& service_;
  NS_BUNDLEMGR1::InterfaceBuffer* const buffer_;
};

}  // namespace agent

#endif
