// A client of a topology agent; docs/clients.md explains the steps. AGENT is HOST:PORT.
//   topo-client AGENT list                        prints the nodes of the topology
//   topo-client AGENT label EMS CLASS VALUE TEXT  sets the user label of an object
//   topo-client AGENT watch [LAST-ID]             prints notifications until it is killed
// The option -ORBendPoint giop:tcp:HOST: sets the address at which the agent reaches watch.

#include <iostream>
#include <string>

#include "TopoAgent.hh"
#include "TopoManagementManager.hh"

using TopoManagementManager::TopoMgr_I;
using TopoManagementManager::TopoMgr_I_var;

void list(TopoMgr_I_var manager) {
  TopoManagementManager::NodeList_T_var nodes;
  TopoManagementManager::NodeIterator_I_var rest;
  manager->getTopoSubnetworkViewInfo(20, nodes.out(), rest.out());
  for (bool isLast = CORBA::is_nil(rest);; isLast = !rest->next_n(20, nodes.out())) {
    for (CORBA::ULong i = 0; i < nodes->length(); ++i) {
      const globaldefs::NVSList_T& name = nodes[i].name;
      std::cout << name[0].value << "  " << name[1].name << '=' << name[1].value << "  "
                << nodes[i].nativeEMSName << '\n';
    }
    if (isLast) {
      return;  // the iterator has ended; rest->destroy() ends an iterator before its last batch
    }
  }
}

void label(TopoMgr_I_var manager, char** words) {
  globaldefs::NVSList_T name;
  name.length(2);
  name[0].name = CORBA::string_dup("EMS");
  name[0].value = CORBA::string_dup(words[0]);
  name[1].name = CORBA::string_dup(words[1]);
  name[1].value = CORBA::string_dup(words[2]);
  manager->setUserLabel(name, words[3], false);
}

struct Consumer : POA_CosNotifyComm::StructuredPushConsumer {
  // The agent calls again when this function has returned: return quickly.
  void push_structured_event(const CosNotification::StructuredEvent& event) override {
    std::cout << event.header.fixed_header.event_type.type_name;
    for (CORBA::ULong i = 0; i < event.filterable_data.length(); ++i) {
      const CosNotification::Property& field = event.filterable_data[i];
      const char* text = nullptr;
      const globaldefs::NVSList_T* name = nullptr;
      if (field.value >>= text) {
        std::cout << "  " << field.name << '=' << text;
      } else if ((field.value >>= name) && name->length() == 2) {
        std::cout << "  " << (*name)[1].name << '=' << (*name)[1].value;
      }
    }
    std::cout << std::endl;
  }
  void offer_change(const CosNotification::EventTypeSeq&,
                    const CosNotification::EventTypeSeq&) override {}
  void disconnect_structured_push_consumer() override {}
};

void watch(CORBA::ORB_ptr orb, TopoAgent::Session_I_var session, const char* lastId) {
  CORBA::Object_var object = orb->resolve_initial_references("RootPOA");
  PortableServer::POA_var poa = PortableServer::POA::_narrow(object);
  PortableServer::Servant_var<Consumer> servant = new Consumer;
  CosNotifyComm::StructuredPushConsumer_var consumer = servant->_this();
  PortableServer::POAManager_var(poa->the_POAManager())->activate();
  TopoAgent::Subscription_I_var subscription = session->subscribe(consumer, lastId);
  for (std::cout << "subscribed" << std::endl;; subscription->ping()) {
    omni_thread::sleep(5);
  }
}

int main(int argc, char** argv) try {
  const char* options[][2] = {{"nativeCharCodeSet", "UTF-8"},
                              {"defaultCharCodeSet", "UTF-8"},
                              {"clientCallTimeOutPeriod", "30000"},
                              {nullptr, nullptr}};
  CORBA::ORB_var orb = CORBA::ORB_init(argc, argv, "omniORB4", options);
  const std::string command = argc > 2 ? argv[2] : "";
  const bool isWatch = command == "watch";
  const std::string address = "corbaloc:iiop:1.2@" + std::string(argc > 1 ? argv[1] : "") +
                              (isWatch ? "/TopoAgentSession" : "/TopoManagement");
  CORBA::Object_var object = orb->string_to_object(address.c_str());
  if (isWatch) {
    watch(orb, TopoAgent::Session_I::_narrow(object), argc > 3 ? argv[3] : "");
  } else if (command == "label" && argc == 7) {
    label(TopoMgr_I::_narrow(object), argv + 3);
  } else {
    list(TopoMgr_I::_narrow(object));
  }
} catch (const globaldefs::ProcessingFailureException& refusal) {
  std::cerr << "refused (" << refusal.exceptionType << "): " << refusal.errorReason << '\n';
  return 3;
} catch (const CORBA::SystemException& failure) {
  std::cerr << failure._name() << '\n';
  return 2;
}
