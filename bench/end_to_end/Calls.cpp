// Measures calls of a client process, in turns.
//
//   bench_calls WARM_UPS ROUNDS CALL=REFERENCE...
//
// CALL is one of
//   view            the topo subnetwork view in one batch
//   walk:N          the topo subnetwork view in batches of N
//   links           the clock links in one batch
//   capabilities:N  N calls of getCapabilities
//   empty:N         N calls of the destroy() of an iterator
//   bytes           not a time: the view's bytes in memory, without the overhead of the allocator
// The case json=PORT fetches the nodes as JSON over HTTP and parses them.

#include <httplib.h>

#include <cstring>
#include <nlohmann/json.hpp>

#include "bench/end_to_end/Client.h"
#include "bench/end_to_end/Rounds.h"

namespace bench {
namespace {

using TopoManagementManager::NodeIterator_I;
using TopoManagementManager::NodeIterator_I_var;
using TopoManagementManager::NodeList_T;
using TopoManagementManager::NodeList_T_var;
using TopoManagementManager::TopoMgr_I;
using TopoManagementManager::TopoMgr_I_var;

void walk(const TopoMgr_I_var& manager, CORBA::ULong batch) {
  NodeList_T_var nodes;
  NodeIterator_I_var iterator;
  manager->getTopoSubnetworkViewInfo(batch, nodes.out(), iterator.out());
  for (bool more = !CORBA::is_nil(iterator.in()); more;) {
    more = iterator->next_n(batch, nodes.out());
  }
}

std::size_t bytesOf(const char* text) {
  return std::strlen(text) + 1;
}

std::size_t bytesOf(const globaldefs::NVSList_T& pairs) {
  std::size_t bytes = pairs.length() * sizeof(globaldefs::NameAndStringValue_T);
  for (CORBA::ULong i = 0; i < pairs.length(); ++i) {
    bytes += bytesOf(pairs[i].name.in()) + bytesOf(pairs[i].value.in());
  }
  return bytes;
}

std::size_t bytesOf(const NodeList_T& nodes) {
  std::size_t bytes = nodes.length() * sizeof(TopoManagementManager::Node_T);
  for (CORBA::ULong i = 0; i < nodes.length(); ++i) {
    bytes += bytesOf(nodes[i].name) + bytesOf(nodes[i].nativeEMSName.in()) +
             bytesOf(nodes[i].relatedName) + bytesOf(nodes[i].additionalInfo);
  }
  return bytes;
}

void fetchJson(int port) {
  httplib::Client client("127.0.0.1", port);
  client.set_read_timeout(std::chrono::minutes(5));
  const httplib::Result result = client.Get("/nodes", {{"Accept-Encoding", "identity"}});
  if (!result || result->status != 200) {
    throw std::runtime_error("the HTTP server does not answer");
  }
  if (!nlohmann::json::parse(result->body).is_array()) {
    throw std::runtime_error("the HTTP server sends other data");
  }
}

Measurement repeated(std::size_t times, const std::function<void()>& call) {
  return [times, call] {
    return secondsOf([&] {
      for (std::size_t i = 0; i < times; ++i) {
        call();
      }
    });
  };
}

Measurement viewMeasurement(const std::string& call, const TopoMgr_I_var& manager) {
  const std::size_t count = countIn(call);
  if (nameIn(call) == "view") {
    return repeated(1, [manager] { viewOf(manager); });
  }
  if (nameIn(call) == "walk") {
    return repeated(1, [manager, count] { walk(manager, static_cast<CORBA::ULong>(count)); });
  }
  if (nameIn(call) == "links") {
    return repeated(1, [manager] { linksOf(manager); });
  }
  if (nameIn(call) == "capabilities") {
    return repeated(count, [manager] {
      common::CapabilityList_T_var list;
      manager->getCapabilities(list.out());
    });
  }
  if (nameIn(call) == "bytes") {
    return [manager] { return static_cast<double>(bytesOf(viewOf(manager).in())); };
  }
  throw std::invalid_argument("there is no call " + call);
}

Measurement measurementOf(CORBA::ORB_ptr orb, const std::string& argument) {
  const std::size_t end = argument.find('=');
  if (end == std::string::npos) {
    throw std::invalid_argument(argument + " is not CALL=REFERENCE");
  }
  const std::string call = argument.substr(0, end);
  const std::string reference = argument.substr(end + 1);
  if (call == "json") {
    return repeated(1, [port = std::stoi(reference)] { fetchJson(port); });
  }
  if (nameIn(call) == "empty") {
    const NodeIterator_I_var iterator = narrowed<NodeIterator_I>(orb, reference);
    return repeated(countIn(call), [iterator] { iterator->destroy(); });
  }
  return viewMeasurement(call, narrowed<TopoMgr_I>(orb, reference));
}

}  // namespace
}  // namespace bench

int main(int argc, char* argv[]) {
  const auto orb = orb::startClient(bench::generousOptions());
  return bench::measureInTurns(argc, argv, [&orb](const std::string& argument) {
    return bench::measurementOf(orb->get(), argument);
  });
}
