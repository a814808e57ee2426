#include "agent/northbound/ViewSizes.h"

#include "orb/idl/TopoManagementManager.h"
#include "orb/idl/topologicalLink.h"
#include "platform/domain/DomainRecords.h"

namespace agent {
namespace {

// An allocation of a few bytes; also the memory of a text without its characters.
constexpr std::size_t kAllocation = 32;

constexpr std::size_t kPair = sizeof(globaldefs::NameAndStringValue_T) + 2 * kAllocation;

// Every name of an object has two pairs, one of them with the ems name.
std::size_t nameBytes(std::size_t emsBytes) {
  return kAllocation + 2 * kPair + emsBytes;
}

// The pairs of a node with the test switch on, their texts included.
constexpr std::size_t kAdditionalInfo = kAllocation + 7 * (kPair + kAllocation);

// A growing list of the module needs up to three times the size of its records during a move. A
// view below a subnetwork copies the selected nodes.
constexpr std::size_t kWorkFactor = 3;

std::size_t workOf(std::size_t count, std::size_t record, std::size_t texts) {
  return kWorkFactor * count * record + 2 * texts;
}

ViewSize nodesView(const NetworkLoad& load, std::size_t emsBytes, bool testSwitch) {
  const std::size_t record = sizeof(TopoManagementManager::Node_T) + 2 * nameBytes(emsBytes) +
                             kAllocation + (testSwitch ? kAdditionalInfo : 0);
  const std::size_t texts = load.nodes.texts + load.elements.texts;
  ViewSize size;
  size.records = load.nodes.count + load.elements.count;
  size.result = size.records * record + texts;
  size.work = workOf(size.records, sizeof(NS_DOMAIN::TopoNode_T) + kAllocation, texts) +
              workOf(load.elements.count, sizeof(NS_DOMAIN::NE_T), load.elements.texts);
  return size;
}

ViewSize positionsView(const NetworkLoad& load, std::size_t emsBytes) {
  const std::size_t record =
      sizeof(TopoManagementManager::Node_T) + nameBytes(emsBytes) + kAllocation;
  ViewSize size;
  size.records = load.positions.count;
  size.result = size.records * record + load.positions.texts;
  size.work = size.records * sizeof(NS_DOMAIN::ClockPositionInfo_T) + load.positions.texts;
  return size;
}

// A native name is also in the user label and in the additional information.
ViewSize linksView(const NetworkLoad& load, std::size_t emsBytes) {
  const std::size_t record = sizeof(topologicalLink::TopologicalLink_T) + 3 * nameBytes(emsBytes) +
                             2 * kAllocation + kAllocation + kPair;
  ViewSize size;
  size.records = load.links.count;
  size.result = size.records * record + 3 * load.links.texts;
  size.work = size.records * sizeof(NS_DOMAIN::ClockTopoLinkInfo_T) + load.links.texts;
  return size;
}

}  // namespace

ViewSizes::ViewSizes(const NetworkModel& model, const std::string& emsName)
    : model_(model), emsBytes_(emsName.size()) {}

ViewSize ViewSizes::of(ViewKind kind, bool testSwitch) {
  const NetworkLoad load = currentLoad();
  switch (kind) {
    case ViewKind::kClockPositions:
      return positionsView(load, emsBytes_);
    case ViewKind::kClockLinks:
      return linksView(load, emsBytes_);
    case ViewKind::kNodes:
      break;
  }
  return nodesView(load, emsBytes_, testSwitch);
}

std::size_t ViewSizes::topologyRecords(bool testSwitch) {
  const NetworkLoad load = currentLoad();
  return load.nodes.named + (testSwitch ? 0 : load.elements.named);
}

// Reads the model only after a change.
NetworkLoad ViewSizes::currentLoad() {
  const MutexLock lock(mutex_);
  const std::uint64_t version = model_.version();
  if (!load_ || version != version_) {
    load_ = model_.load();
    version_ = version;
  }
  return *load_;
}

}  // namespace agent
