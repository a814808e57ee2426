#include "agent/northbound/Northbound.h"

#include <utility>

#include "agent/domain/FailureCodes.h"
#include "platform/agent/AgentConfig.h"
#include "platform/agent/TAIteratorHelper.h"

namespace agent {
namespace {

std::atomic<Northbound*> theInstance{nullptr};

}  // namespace

Northbound::Northbound(orb::Server& server, std::string emsName, bool testSwitch)
    : emsName_(std::move(emsName)),
      testSwitch_(testSwitch),
      managers_(server),
      iterators_(server.rootPoa()) {
  theInstance.store(this);
}

Northbound::~Northbound() {
  theInstance.store(nullptr);
}

Northbound& Northbound::instance() {
  return *theInstance.load();
}

void Northbound::open() {
  iterators_.open();
}

// The managers first: their requests make iterators.
void Northbound::retire() {
  managers_.retire();
  iterators_.retire();
}

}  // namespace agent

namespace NS_CORBA {

using agent::Northbound;

MgrFactory::~MgrFactory() = default;

CorbaBaseAgentConfig* CorbaBaseAgentConfig::Instance() {
  static CorbaBaseAgentConfig instance;
  return &instance;
}

void CorbaBaseAgentConfig::RegisterMgr(const char* name, MgrFactory* factory) {
  Northbound::instance().managers().add(name, factory);
}

void CorbaBaseAgentConfig::UnregisterMgr(const char* name) {
  Northbound::instance().managers().remove(name);
}

std::string CorbaBaseAgentConfig::EmsName() {
  return Northbound::instance().emsName();
}

CorbaAgentConfig* CorbaAgentConfig::Instance() {
  static CorbaAgentConfig instance;
  return &instance;
}

void CorbaAgentConfig::RegisterServant(const char* name, POA_common::Common_I* servant) {
  Northbound::instance().managers().serve(name, servant);
}

bool CorbaAgentConfig::GetTestSwitch() {
  return Northbound::instance().testSwitch();
}

PortableServer::POA_ptr TAIteratorHelper::getIteratorPoa() {
  return Northbound::instance().iterators().poa();
}

CORBA::ULong TAIteratorHelper::add_Iterator(PortableServer::ServantBase* servant) {
  return Northbound::instance().iterators().add(servant) ? agent::kSuccess : agent::kInternalError;
}

void TAIteratorHelper::deactive_object(PortableServer::ServantBase* servant) {
  Northbound::instance().iterators().deactivate(servant);
}

}  // namespace NS_CORBA
