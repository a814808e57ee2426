// An HTTP server of the nodes of the topo subnetwork view: what a host without CORBA would do.
//
//   bench_http MANAGER
//
// Reads the view of a manager once. Every GET of /nodes converts the records of the view to JSON.
// Prints the port, then serves until standard input ends.

#include <httplib.h>

#include <iostream>
#include <limits>
#include <nlohmann/json.hpp>
#include <thread>

#include "bench/end_to_end/Client.h"

namespace {

using nlohmann::json;
using TopoManagementManager::NodeList_T;

json asJson(const globaldefs::NVSList_T& pairs) {
  json result = json::array();
  for (CORBA::ULong i = 0; i < pairs.length(); ++i) {
    result.push_back({{"name", pairs[i].name.in()}, {"value", pairs[i].value.in()}});
  }
  return result;
}

std::string asJsonText(const NodeList_T& nodes) {
  json result = json::array();
  for (CORBA::ULong i = 0; i < nodes.length(); ++i) {
    const TopoManagementManager::Node_T& node = nodes[i];
    result.push_back({{"name", asJson(node.name)},
                      {"nativeEMSName", node.nativeEMSName.in()},
                      {"nodeType", node.nodeType},
                      {"nodeParam1", node.nodeParam1},
                      {"nodeParam2", node.nodeParam2},
                      {"relatedName", asJson(node.relatedName)},
                      {"additionalInfo", asJson(node.additionalInfo)}});
  }
  return result.dump();
}

int serve(const std::string& reference) {
  const auto orb = orb::startClient(bench::generousOptions());
  const auto nodes =
      bench::viewOf(bench::narrowed<TopoManagementManager::TopoMgr_I>(orb->get(), reference));
  httplib::Server server;
  server.Get("/nodes", [&nodes](const httplib::Request& /*request*/, httplib::Response& response) {
    response.set_content(asJsonText(nodes.in()), "application/json");
  });
  std::cout << server.bind_to_any_port("127.0.0.1") << std::endl;
  std::thread thread([&server] { server.listen_after_bind(); });
  std::cin.ignore(std::numeric_limits<std::streamsize>::max());
  server.stop();
  thread.join();
  return 0;
}

}  // namespace

int main(int argc, char* argv[]) {
  if (argc != 2) {
    std::cerr << "usage: bench_http MANAGER\n";
    return 2;
  }
  try {
    return serve(argv[1]);
  } catch (const CORBA::SystemException& failure) {
    std::cerr << "bench_http: " << orb::describe(failure) << '\n';
  } catch (const std::exception& failure) {
    std::cerr << "bench_http: " << failure.what() << '\n';
  }
  return 2;
}
