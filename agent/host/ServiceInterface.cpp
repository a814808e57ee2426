// Defines platform/bundlemgr/ServiceInterface.h: the interfaces that are published under names.

#include "platform/bundlemgr/ServiceInterface.h"

#include "agent/host/InterfaceBuffers.h"

namespace agent {

using NS_BUNDLEMGR1::InterfaceBuffer;
using NS_BUNDLEMGR1::ServiceInterface;

InterfaceBuffers& InterfaceBuffers::instance() {
  static InterfaceBuffers instance;
  return instance;
}

InterfaceBuffer* InterfaceBuffers::find(const std::string& name) const {
  const MutexLock lock(mutex_);
  const auto entry = buffers_.find(name);
  return entry != buffers_.end() ? entry->second.get() : nullptr;
}

InterfaceBuffer* InterfaceBuffers::findOrMake(const std::string& name) {
  const MutexLock lock(mutex_);
  std::unique_ptr<InterfaceBuffer>& buffer = buffers_[name];
  if (!buffer) {
    buffer = std::make_unique<InterfaceBuffer>();
  }
  return buffer.get();
}

void InterfaceBuffers::removeEverywhere(const ServiceInterface* interface) {
  const MutexLock lock(mutex_);
  for (const auto& entry : buffers_) {
    entry.second->Remove(interface);
  }
}

}  // namespace agent

namespace NS_BUNDLEMGR1 {
namespace {

ACE_mutex_t initializedMutex() {
  ACE_mutex_t mutex;
  ACE_OS::mutex_init(&mutex);
  return mutex;
}

}  // namespace

ACE_mutex_t _g_actualmutex = initializedMutex();

ServiceInterface::~ServiceInterface() = default;
NULLServiceInterface::~NULLServiceInterface() = default;

void SetIFBuf(const std::string& name, ServiceInterface* interface) {
  InterfaceBuffer* const buffer = agent::InterfaceBuffers::instance().findOrMake(name);
  const agent::BundleLock lock;
  buffer->Append(interface);
}

InterfaceBuffer* CheckIFBuf(const std::string& name) {
  return agent::InterfaceBuffers::instance().find(name);
}

}  // namespace NS_BUNDLEMGR1
