// A service interface of the agent's own, offered to modules.

#ifndef AGENT_HOST_PUBLICATION_H
#define AGENT_HOST_PUBLICATION_H

#include "platform/bundlemgr/ServiceInterface.h"

namespace agent {

// The interface is published under a name for as long as this lives. Borrows it.
// Thread-safety: made and ended while no module looks for it.
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
