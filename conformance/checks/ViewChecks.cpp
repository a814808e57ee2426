#include <map>
#include <set>
#include <string>
#include <vector>

#include "conformance/Records.h"
#include "conformance/checks/ClientChecks.h"
#include "conformance/checks/Refusals.h"
#include "conformance/checks/Views.h"

namespace conformance {
namespace {

using TopoManagementManager::Node_T;

template <typename Record>
std::vector<std::string> texts(const std::vector<Record>& records) {
  std::vector<std::string> result;
  result.reserve(records.size());
  for (const Record& record : records) {
    result.push_back(toText(record));
  }
  return result;
}

// Batches of one record, unless the view is large.
CORBA::ULong batchFor(std::size_t records) {
  constexpr std::size_t kMostCalls = 50;
  return static_cast<CORBA::ULong>(records / kMostCalls + 1);
}

template <typename Read>
void requireSameInBatches(const std::string& view, Read read) {
  const auto whole = texts(read(kWholeView));
  skipWithoutIterators([&] {
    require(texts(read(batchFor(whole.size()))) == whole,
            view + " in batches differs from the view in one reply");
    require(texts(read(0)) == whole, view + " with how_many 0 differs from the view in one reply");
  });
}

void requireUniqueNames(const NamedView& view) {
  std::set<std::string> names;
  for (const Node_T& node : readNodes(view.read, kWholeView)) {
    const auto [name, isNew] = names.insert(toText(node.name));
    require(isNew, view.name + " has the name \"" + *name + "\" twice");
  }
}

// The additional information may depend on the view.
std::string withoutAdditionalInfo(Node_T node) {
  node.additionalInfo.length(0);
  return toText(node);
}

std::vector<std::string> textsWithoutAdditionalInfo(const std::vector<Node_T>& nodes) {
  std::vector<std::string> result;
  result.reserve(nodes.size());
  for (const Node_T& node : nodes) {
    result.push_back(withoutAdditionalInfo(node));
  }
  return result;
}

}  // namespace

void checkInterfaces(Context& context) {
  for (const char* id : {"IDL:TopoManagementManager/TopoMgr_I:1.0", "IDL:common/Common_I:1.0"}) {
    require(context.manager()->_is_a(id), std::string("the manager is not a ") + id);
  }
}

void checkWellFormedRecords(Context& context) {
  const std::string ems = emsOf(context.manager());
  for (const NamedView& view : nodeViews(context.manager())) {
    for (const Node_T& node : readNodes(view.read, kWholeView)) {
      requireWellFormed(node, ems);
    }
  }
  for (const auto& link : readLinks(context.manager(), kWholeView)) {
    requireWellFormed(link, ems);
  }
}

void checkUniqueNames(Context& context) {
  for (const NamedView& view : nodeViews(context.manager())) {
    if (view.hasUniqueNames) {
      requireUniqueNames(view);
    }
  }
}

void checkBatches(Context& context) {
  for (const NamedView& view : nodeViews(context.manager())) {
    requireSameInBatches(view.name,
                         [&view](CORBA::ULong howMany) { return readNodes(view.read, howMany); });
  }
  requireSameInBatches("the view of clock links", [&context](CORBA::ULong howMany) {
    return readLinks(context.manager(), howMany);
  });
}

void checkProtectionView(Context& context) {
  const auto views = nodeViews(context.manager());
  std::vector<std::string> names[2];
  for (std::size_t i = 0; i < 2; ++i) {
    for (const Node_T& node : readNodes(views[i].read, kWholeView)) {
      names[i].push_back(toText(node.name));
    }
  }
  require(names[0] == names[1], "the protection view has other nodes than the topology view");
}

// The parents are those of the topology view.
void checkViewBelow(Context& context) {
  const auto topology = readTopology(context.manager());
  const globaldefs::NVSList_T subnetwork = firstSubnetwork(context.manager());
  std::set<std::string> below = {toText(subnetwork)};
  std::vector<std::string> expected;
  for (std::size_t size = 0; size != below.size();) {
    size = below.size();
    expected.clear();
    for (const Node_T& node : topology) {
      if (below.count(toText(node.relatedName)) != 0) {
        below.insert(toText(node.name));
        expected.push_back(withoutAdditionalInfo(node));
      }
    }
  }
  const auto nodes = readNodes(viewBelow(context.manager(), subnetwork), kWholeView);
  require(textsWithoutAdditionalInfo(nodes) == expected,
          "the view below \"" + toText(subnetwork) + "\" has other nodes than its descendants");
}

}  // namespace conformance
