#include <string>
#include <vector>

#include "conformance/Records.h"
#include "conformance/checks/OperatorChecks.h"
#include "conformance/checks/Views.h"

namespace conformance {
namespace {

constexpr int kReloads = 20;

std::vector<std::string> topologyTexts(Context& context) {
  std::vector<std::string> texts;
  for (const auto& node : readTopology(context.manager())) {
    texts.push_back(toText(node));
  }
  return texts;
}

void skipUnlessOwn(Context& context) {
  if (!context.host.isOwn()) {
    throw Skipped("only for a host that topo-conformance starts");
  }
}

}  // namespace

void checkBoundSymbols(Context& context) {
  skipUnlessOwn(context);
  // With ACE_DEBUG=1, ACE prints the reason of a failed load.
  context.host.start(Plugin::kModule, {"LD_BIND_NOW=1", "ACE_DEBUG=1"});
  context.host.stop();  // the other checks use the environment of the user
}

void checkReloads(Context& context) {
  const auto before = topologyTexts(context);
  for (int i = 0; i < kReloads; ++i) {
    context.host.reload();
    require(topologyTexts(context) == before,
            "the topology view has changed after reload " + std::to_string(i + 1));
  }
}

void checkReferenceAfterReload(Context& context) {
  const TopoManagementManager::TopoMgr_I_var old =
      TopoManagementManager::TopoMgr_I::_duplicate(context.manager());
  context.host.reload();
  try {
    readTopology(old.in());
  } catch (const CORBA::OBJECT_NOT_EXIST&) {
    throw Broken("the manager does not exist at its reference from before the reload");
  }
}

void checkIteratorAfterReload(Context& context) {
  CORBA::ULong left = 0;
  const TopoManagementManager::NodeIterator_I_var iterator = openIterator(context.manager(), left);
  context.host.reload();
  try {
    TopoManagementManager::NodeList_T_var batch;
    iterator->next_n(1, batch.out());
  } catch (const CORBA::OBJECT_NOT_EXIST&) {
    return;
  }
  throw Broken("the iterator still answers after a reload");
}

// The console of an agent can only reload. After a reload exactly one file must be mapped. A reload
// that does not unmap the old file adds a second file, or keeps the old file with its state.
void checkNothingMapped(Context& context) {
  skipUnlessOwn(context);
  std::size_t expected = 0;
  try {
    context.host.op().unload();
  } catch (const Skipped&) {
    expected = 1;
    context.host.reload();
  }
  const std::size_t mapped = context.host.mappedFiles();
  if (expected == 0) {
    context.host.load();
  }
  require(mapped == expected,
          std::to_string(mapped) + " files " + context.host.pluginFile() + " are mapped after " +
              (expected == 0 ? "an unload" : "a reload") + ", not " + std::to_string(expected));
}

void checkEnd(Context& context) {
  skipUnlessOwn(context);
  require(context.host.stop(), "the host does not end with status 0 on request");
}

}  // namespace conformance
