// Measures the module in this process, in turns, on the agent's domain data and naming.
//
//   bench_views WARM_UPS ROUNDS CASE...
//
// CASE is one of
//   view:N          the topo subnetwork view of N nodes
//   view-forest:N   the topo subnetwork view of N nodes with two roots
//   below-forest:N  the view below the root of nine nodes in ten of the same network
//   below-deep:N/D  the view below the root of N nodes in chains of D
//   below:N         finding N nodes below a root, by the module
//   below-plain:N   the same by the plain loop of the property tests
//   exclude:N       finding which of N elements are not shown: one in ten, with rising numbers
//   labels:N        the topo subnetwork view of N nodes with the test switch on and 3 N user labels
//   no-labels:N     the same with an empty file name
// All numbers are seconds. A view with labels is cut off after three seconds; its number is then a
// lower limit.

#include <algorithm>
#include <chrono>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "agent/host/RunningAgent.h"
#include "agent/northbound/Northbound.h"
#include "bench/Networks.h"
#include "bench/Platform.h"
#include "bench/end_to_end/Rounds.h"
#include "tests/property/Oracles.h"
#include "tests/support/Pairs.h"
#include "tests/support/TemporaryDirectory.h"
#include "tests/unit/topomanagementmgrimpl/ServantUnderTest.h"
#include "topo/Holder.h"
#include "topomanagementmgr/ParentChains.h"
#include "topomanagementmgr/TopoManagementMgr.h"
#include "topomanagementmgr/UserLabels.h"
#include "topomanagementmgr/UserlabelMap.h"

namespace bench {
namespace {

using NS_DOMAIN::NEIndex;
using NS_DOMAIN::TopoNode_T;
using TopoManagementManager::NodeIterator_I_var;
using TopoManagementManager::NodeList_T;
using TopoManagementManager::NodeList_T_var;

constexpr CORBA::ULong kAll = 0xffffffff;  // more than any view has

void require(bool condition, const char* text) {
  if (!condition) {
    throw std::runtime_error(text);
  }
}

// The mean of some runs, for measurements of less than a millisecond.
double meanSecondsOf(int runs, const std::function<void()>& run) {
  return secondsOf([&] {
           for (int i = 0; i < runs; ++i) {
             run();
           }
         }) /
         runs;
}

// --- Views.

CORBA::ULong wholeView(ServantUnderTest& servant) {
  NodeList_T_var nodes;
  NodeIterator_I_var iterator;
  servant.getTopoSubnetworkViewInfo(kAll, nodes.out(), iterator.out());
  return nodes->length();
}

CORBA::ULong viewBelowTop(ServantUnderTest& servant) {
  const globaldefs::NVSList_T top = nameOf({{"EMS", kEms}, {"TopoSubnetwork", kTop}});
  NodeList_T_var nodes;
  NodeIterator_I_var iterator;
  servant.getViewInfoByTopoSubnetwork(top, kAll, nodes.out(), iterator.out());
  return nodes->length();
}

// Measures the second of two views of a new platform: a process has one platform at a time.
Measurement measuredView(const std::shared_ptr<const agent::Network>& network, std::size_t expected,
                         CORBA::ULong (*view)(ServantUnderTest&)) {
  return [network, expected, view] {
    const Platform platform(*network);
    const Servant_var servant = new ServantUnderTest;
    require(view(*servant.in()) == expected, "the view is not whole");
    return secondsOf([&] { view(*servant.in()); });
  };
}

std::shared_ptr<const agent::Network> shared(agent::Network network) {
  return std::make_shared<const agent::Network>(std::move(network));
}

// --- Nodes below a root, without the view.

template <typename IsBelow>
std::size_t countBelow(const std::vector<TopoNode_T>& nodes, const IsBelow& isBelow) {
  std::size_t below = 0;
  for (const TopoNode_T& node : nodes) {
    below += isBelow(node.parentId) ? 1 : 0;
  }
  return below;
}

std::size_t countByModule(const std::vector<TopoNode_T>& nodes) {
  const std::string top = kTop;
  topo::ParentChains chains(top, nodes);
  return countBelow(nodes, [&](const std::string& id) { return chains.leadToSubnetwork(id); });
}

std::size_t countPlainly(const std::vector<TopoNode_T>& nodes) {
  const std::string top = kTop;
  return countBelow(nodes, [&](const std::string& id) { return oracle::isBelow(top, id, nodes); });
}

// Whether the module and the plain loop have the same answer for every node.
bool haveSameAnswers(const std::vector<TopoNode_T>& nodes) {
  const std::string top = kTop;
  const topo::ParentChains chains(top, nodes);
  return std::all_of(nodes.begin(), nodes.end(), [&](const TopoNode_T& node) {
    return chains.leadToSubnetwork(node.parentId) == oracle::isBelow(top, node.parentId, nodes);
  });
}

Measurement nodesBelow(std::size_t count, bool plainly) {
  const auto nodes = std::make_shared<const std::vector<TopoNode_T>>(forest(count).topoNodes);
  require(haveSameAnswers(*nodes), "the plain loop has another answer");
  return [nodes, plainly] {
    return plainly ? secondsOf([&] { countPlainly(*nodes); })
                   : meanSecondsOf(10, [&] { countByModule(*nodes); });
  };
}

// --- Elements that are not shown.

Measurement exclusion(std::size_t count) {
  constexpr int kRuns = 50;
  std::vector<NEIndex> all(count);
  std::vector<NEIndex> shown;
  for (std::size_t i = 0; i < count; ++i) {
    all[i].number = static_cast<std::int32_t>(i);
    if (i % 10 != 0) {
      shown.push_back(all[i]);
    }
  }
  return [all, shown] {
    return meanSecondsOf(kRuns, [&] {
      require(TopoManagementMgr::indexesNotShown(all, shown).size() == all.size() - shown.size(),
              "the elements are not whole");
    });
  };
}

// --- User labels.

// A file with three labels for each of `subnetworks` subnetworks.
std::string labelFile(const support::TemporaryDirectory& directory, std::size_t subnetworks) {
  std::string name = directory.file("labels.txt");
  std::ofstream file(name);
  for (std::size_t i = 0; i < subnetworks; ++i) {
    for (const char* kind : {"userLabel", "SubnetworkBandWidth", "layerRate"}) {
      file << "subnetwork-" << i << kind << ";Label " << i << '\n';
    }
  }
  return name;
}

// The view with the test switch on, with another file of labels than the module's.
class LabelledView {
 public:
  // withFile: the view has a file of labels.
  LabelledView(std::size_t nodes, bool withFile)
      : network_(tree(nodes)),
        fileName_(withFile ? labelFile(directory_, nodes) : ""),
        labels_(fileName_.c_str()) {}

  double seconds() {
    const Platform platform(network_);
    agent::runningAgent().northbound->setTestSwitch(true);
    return secondsOf([this] { run(); });
  }

 private:
  struct TooLong {};
  static constexpr std::chrono::seconds kLongest{3};

  void run() {
    const auto end = std::chrono::steady_clock::now() + kLongest;
    NodeList_T nodes;
    try {
      topo::Holder<std::vector<TopoNode_T>> domainNodes;
      TopoManagementMgr::getTopoSubnetworkViewBaseInfo(*domainNodes.get());
      TopoManagementMgr::convertDomainNodesToTmf(nodes, *domainNodes);
      TopoManagementMgr::addNodeAttributes(nodes, *domainNodes, [&](const std::string& key) {
        if (std::chrono::steady_clock::now() > end) {
          throw TooLong();
        }
        return labels_.labelOf(key);
      });
    } catch (const TooLong&) {
      return;
    }
    require(nodes.length() == network_.topoNodes.size(), "the view is not whole");
  }

  const agent::Network network_;
  const support::TemporaryDirectory directory_;
  const std::string fileName_;
  topo::UserLabels<UserlabelMap<TopoNode_T>> labels_;
};

Measurement measuredLabels(std::size_t nodes, bool withFile) {
  const auto view = std::make_shared<LabelledView>(nodes, withFile);
  return [view] { return view->seconds(); };
}

// --- Cases.

Measurement measurementOf(const std::string& argument) {
  const std::string name = nameIn(argument);
  const std::size_t count = countIn(argument);
  if (name == "view") {
    return measuredView(shared(tree(count)), count, wholeView);
  }
  if (name == "view-forest") {
    return measuredView(shared(forest(count)), count, wholeView);
  }
  if (name == "below-forest") {
    return measuredView(shared(forest(count)), nodesBelowTopOfForest(count), viewBelowTop);
  }
  if (name == "below-deep") {
    const std::size_t depth = std::stoul(argument.substr(argument.find('/') + 1));
    return measuredView(shared(chains(count, depth)), count - 1, viewBelowTop);
  }
  if (name == "below" || name == "below-plain") {
    return nodesBelow(count, name == "below-plain");
  }
  if (name == "exclude") {
    return exclusion(count);
  }
  if (name == "labels" || name == "no-labels") {
    return measuredLabels(count, name == "labels");
  }
  throw std::invalid_argument("there is no case " + argument);
}

}  // namespace
}  // namespace bench

int main(int argc, char* argv[]) {
  return bench::measureInTurns(argc, argv, bench::measurementOf);
}
