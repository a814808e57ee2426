// A bare servant on the ORB and with the allocator of the agent, for the cost of the ORB alone.
//
//   bench_echo MANAGER
//
// Reads the topo subnetwork view and the clock links of a manager once, and serves an object of the
// manager's interface. Views of the object return a copy of the lists, other operations do nothing.
// Prints the references of the object and of an iterator, whose destroy() is the empty call, then
// serves until standard input ends.

#include <iostream>
#include <limits>
#include <string>

#include "bench/end_to_end/Client.h"

namespace {

using topologicalLink::TopologicalLinkIterator_I;
using topologicalLink::TopologicalLinkIterator_I_out;
using topologicalLink::TopologicalLinkList_T;
using topologicalLink::TopologicalLinkList_T_out;
using topologicalLink::TopologicalLinkList_T_var;
using TopoManagementManager::NodeIterator_I;
using TopoManagementManager::NodeIterator_I_out;
using TopoManagementManager::NodeList_T;
using TopoManagementManager::NodeList_T_out;
using TopoManagementManager::NodeList_T_var;
using TopoManagementManager::TopoMgr_I_var;

class Echo final : public POA_TopoManagementManager::TopoMgr_I {
 public:
  explicit Echo(const TopoMgr_I_var& manager)
      : nodes_(bench::viewOf(manager)), links_(bench::linksOf(manager)) {}

  void getTopoSubnetworkViewInfo(CORBA::ULong /*how_many*/, NodeList_T_out nodes,
                                 NodeIterator_I_out iterator) override {
    iterator = NodeIterator_I::_nil();
    nodes = new NodeList_T(nodes_.in());
  }
  void getProtectSubnetworkViewInfo(CORBA::ULong how_many, NodeList_T_out nodes,
                                    NodeIterator_I_out iterator) override {
    getTopoSubnetworkViewInfo(how_many, nodes, iterator);
  }
  void getViewInfoByTopoSubnetwork(const globaldefs::NVSList_T& /*name*/, CORBA::ULong how_many,
                                   NodeList_T_out nodes, NodeIterator_I_out iterator) override {
    getTopoSubnetworkViewInfo(how_many, nodes, iterator);
  }
  void getClockSourceSubnetworkViewInfo(CORBA::ULong how_many, NodeList_T_out nodes,
                                        NodeIterator_I_out iterator) override {
    getTopoSubnetworkViewInfo(how_many, nodes, iterator);
  }
  void getAllClockSourceViewlTopologicalLinks(CORBA::ULong /*how_many*/,
                                              TopologicalLinkList_T_out links,
                                              TopologicalLinkIterator_I_out iterator) override {
    iterator = TopologicalLinkIterator_I::_nil();
    links = new TopologicalLinkList_T(links_.in());
  }

  void setNativeEMSName(const globaldefs::NVSList_T& /*name*/, const char* /*text*/) override {}
  void setUserLabel(const globaldefs::NVSList_T& /*name*/, const char* /*text*/,
                    CORBA::Boolean /*unique*/) override {}
  void setOwner(const globaldefs::NVSList_T& /*name*/, const char* /*text*/) override {}
  void getCapabilities(common::CapabilityList_T_out capabilities) override {
    capabilities = new common::CapabilityList_T;
  }
  void setAdditionalInfo(const globaldefs::NVSList_T& /*name*/,
                         globaldefs::NVSList_T& /*pairs*/) override {}

 private:
  const NodeList_T_var nodes_;
  const TopologicalLinkList_T_var links_;
};

class EmptyIterator final : public POA_TopoManagementManager::NodeIterator_I {
 public:
  CORBA::Boolean next_n(CORBA::ULong /*how_many*/, NodeList_T_out nodes) override {
    nodes = new NodeList_T;
    return false;
  }
  CORBA::ULong getLength() override { return 0; }
  void destroy() override {}
};

void print(orb::Server& server, const PortableServer::ServantBase_var& servant) {
  const PortableServer::ObjectId_var id = server.rootPoa()->activate_object(servant.in());
  const CORBA::Object_var object = server.rootPoa()->id_to_reference(id.in());
  const CORBA::String_var text = server.get()->object_to_string(object.in());
  std::cout << text.in() << '\n';
}

int serve(const std::string& reference) {
  const auto server = orb::startServer(bench::generousOptions(), {"127.0.0.1", 0}, nullptr);
  const auto manager = bench::narrowed<TopoManagementManager::TopoMgr_I>(server->get(), reference);
  const PortableServer::ServantBase_var echo = new Echo(manager);
  const PortableServer::ServantBase_var iterator = new EmptyIterator;
  const PortableServer::POAManager_var poaManager = server->rootPoa()->the_POAManager();
  poaManager->activate();
  print(*server, echo);
  print(*server, iterator);
  std::cout.flush();
  std::cin.ignore(std::numeric_limits<std::streamsize>::max());
  return 0;
}

}  // namespace

int main(int argc, char* argv[]) {
  if (argc != 2) {
    std::cerr << "usage: bench_echo MANAGER\n";
    return 2;
  }
  try {
    return serve(argv[1]);
  } catch (const CORBA::SystemException& failure) {
    std::cerr << "bench_echo: " << orb::describe(failure) << '\n';
  } catch (const std::exception& failure) {
    std::cerr << "bench_echo: " << failure.what() << '\n';
  }
  return 2;
}
