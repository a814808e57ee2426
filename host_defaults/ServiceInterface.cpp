// Defines platform/bundlemgr/ServiceInterface.h: the interfaces that are published under names.

#include "platform/bundlemgr/ServiceInterface.h"

#include <utility>

#include "host_defaults/InterfaceBuffers.h"

namespace host_defaults {

using NS_BUNDLEMGR1::InterfaceBuffer;
using NS_BUNDLEMGR1::ServiceInterface;

InterfaceBuffers& InterfaceBuffers::instance() {
  static InterfaceBuffers instance;
  return instance;
}

InterfaceBuffers::~InterfaceBuffers() {
  std::unique_ptr<Entry> entry(newest_.load());
  while (entry) {
    entry = std::move(entry->next);
  }
}

InterfaceBuffer* InterfaceBuffers::find(const std::string& name) const {
  Entry* entry = newest_.load(std::memory_order_acquire);
  while (entry != nullptr && entry->name != name) {
    entry = entry->next.get();
  }
  return entry != nullptr ? &entry->buffer : nullptr;
}

InterfaceBuffer* InterfaceBuffers::findOrMake(const std::string& name) {
  const MutexLock lock(mutex_);
  if (InterfaceBuffer* const found = find(name)) {
    return found;
  }
  auto entry = std::make_unique<Entry>();
  entry->name = name;
  entry->next.reset(newest_.load(std::memory_order_relaxed));
  newest_.store(entry.get(), std::memory_order_release);
  return &entry.release()->buffer;
}

void InterfaceBuffers::removeEverywhere(const ServiceInterface* interface) {
  for (Entry* entry = newest_.load(std::memory_order_acquire); entry != nullptr;
       entry = entry->next.get()) {
    entry->buffer.Remove(interface);
  }
}

}  // namespace host_defaults

namespace NS_BUNDLEMGR1 {
namespace {

ACE_mutex_t initializedMutex() {
  ACE_mutex_t mutex;
  ACE_OS::mutex_init(&mutex);
  return mutex;
}

}  // namespace

ACE_mutex_t _g_actualmutex = initializedMutex();

void SetIFBuf(const std::string& name, ServiceInterface* interface) {
  InterfaceBuffer* const buffer = host_defaults::InterfaceBuffers::instance().findOrMake(name);
  const host_defaults::BundleLock lock;
  buffer->Append(interface);
}

InterfaceBuffer* CheckIFBuf(const std::string& name) {
  return host_defaults::InterfaceBuffers::instance().find(name);
}

}  // namespace NS_BUNDLEMGR1
