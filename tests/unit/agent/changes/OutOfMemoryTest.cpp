// Changes without memory: store and model stay equal whichever allocation fails.

#include <gtest/gtest.h>

#include <future>

#include "agent/base/FailureCodes.h"
#include "agent/changes/InventoryService.h"
#include "tests/fakes/FailingNew.h"
#include "tests/support/Pairs.h"
#include "tests/support/Task.h"
#include "tests/unit/agent/changes/ChangingHost.h"

namespace {

using agent::Outcome;

// Expects that the model has every stored label, and that "node 1" has a label in the model only if
// it has a stored label.
void expectLabelsAlike(ChangingHost& host) {
  bool isStored = false;
  for (const agent::ObjectLabel& label : host.store().read().objectLabels) {
    ASSERT_EQ(label.label, host.model().labelOf(label.type, label.id));
    isStored = isStored || label.id == "node 1";
  }
  ASSERT_EQ(isStored, host.model().hasLabel({54, "node 1"}));
}

// Repeats a change with one more successful allocation each time, until the change succeeds.
// Expects that a failed change changes nothing.
template <typename Change>
void expectAllOrNothing(ChangingHost& host, Change change) {
  int failures = 0;
  for (int spared = 0;; ++spared) {
    ASSERT_LT(spared, 5000);
    const agent::Network before = host.seen();
    host.takeEvents();
    const Outcome outcome = [&] {
      const fakes::FailingNew failing(spared);
      return change();
    }();
    ASSERT_EQ(host.stored(), host.seen()) << "after " << spared << " allocations";
    expectLabelsAlike(host);
    if (outcome.code == agent::kSuccess) {
      break;
    }
    ++failures;
    ASSERT_EQ(agent::kInternalError, outcome.code) << outcome.reason;
    ASSERT_EQ(before, host.seen()) << "after " << spared << " allocations";
    ASSERT_TRUE(host.takeEvents().empty());
  }
  EXPECT_LT(3, failures);
}

class OutOfMemory : public testing::Test {
 protected:
  // Enough nodes that some change grows an index.
  OutOfMemory() : host_(agent::SqliteStore::kInMemory, wideNetwork(13)) {}

  ChangingHost host_;
};

TEST_F(OutOfMemory, CreatesANodeOrChangesNothing) {
  for (int i = 0; i < 30; ++i) {
    auto node = nodeOf("EQ=a rack with a long name,NE=" + std::to_string(i), "node 1",
                       NS_DOMAIN::kTopoElement);
    node.extendedAttributes = {{"an attribute with a long key", "and with a long value"}};
    expectAllOrNothing(host_, [&] { return host_.nodes().create(node); });
  }
  EXPECT_EQ(43U, host_.model().topoNodeCount());
}

TEST_F(OutOfMemory, RemovesNodesOrChangesNothing) {
  std::size_t removed = 0;
  expectAllOrNothing(host_, [&] { return host_.nodes().remove("node 0", removed); });
  EXPECT_EQ(13U, removed);
}

TEST_F(OutOfMemory, RenamesANodeOrChangesNothing) {
  expectAllOrNothing(
      host_, [&] { return host_.nodes().rename("node 1", "a name that needs memory of its own"); });
}

TEST_F(OutOfMemory, ImportsANetworkOrChangesNothing) {
  const agent::Network more = sampleNetwork();
  agent::ImportSummary summary;
  expectAllOrNothing(host_, [&] {
    try {
      return host_.nodes().import(more, summary);
    } catch (const std::bad_alloc&) {  // from the copy
      return Outcome{agent::kInternalError, {}};
    }
  });
  EXPECT_EQ(4U, summary.topoNodes);
}

TEST_F(OutOfMemory, ReplacesTheNetworkOrChangesNothing) {
  const agent::Network network = sampleNetwork();
  agent::ImportSummary summary;
  agent::ImportOptions options;
  options.replace = true;
  expectAllOrNothing(host_, [&] {
    try {
      return host_.nodes().import(network, summary, options);
    } catch (const std::bad_alloc&) {  // from the copy
      return Outcome{agent::kInternalError, {}};
    }
  });
  EXPECT_EQ(4U, host_.model().topoNodeCount());
}

TEST_F(OutOfMemory, MovesAndChangesANodeOrChangesNothing) {
  const std::string parent = "a new parent with a long id";
  ASSERT_EQ(agent::kSuccess, host_.nodes().create(nodeOf(parent, "node 2")).code);
  agent::NodeFields fields;
  fields.attributes = Pairs{{"an attribute with a long key", "and with a long value"}};
  expectAllOrNothing(host_, [&] {
    return host_.nodes().move("node 1", parent, agent::NodeService::kTypeOfParent);
  });
  expectAllOrNothing(host_, [&] { return host_.nodes().change("node 1", fields); });
  std::size_t removed = 0;
  EXPECT_EQ(agent::kSuccess, host_.nodes().remove("node 2", removed).code);
  EXPECT_EQ(3U, removed);
}

TEST_F(OutOfMemory, ChangesAndRemovesOtherRecordsOrChangesNothing) {
  agent::ImportSummary summary;
  ASSERT_EQ(agent::kSuccess, host_.nodes().import(sampleNetwork(), summary).code);
  agent::InventoryService service(host_.writer());
  const std::string text = "a text that needs memory of its own";
  const auto expect = [&](const auto& change) {
    expectAllOrNothing(host_, [&] {
      try {
        return change();
      } catch (const std::bad_alloc&) {  // from the arguments
        return Outcome{agent::kInternalError, {}};
      }
    });
  };
  expect([&] { return service.createElement({99, text}); });
  expect([&] { return service.renameElement(7, text); });
  expect([&] { return service.setElementShown(7, true); });
  expect([&] { return service.createClockPosition(positionOf(text, text)); });
  expect([&] { return service.changeClockPosition("NE=7", {text, std::nullopt}); });
  expect([&] { return service.createClockLink(linkOf(text, text)); });
  expect([&] { return service.changeClockLink("z", {text, std::nullopt, text}); });
  expect([&] { return service.removeClockLink("z"); });
  expect([&] { return service.removeClockPosition(text); });
  expect([&] { return service.removeElement(99); });
}

TEST_F(OutOfMemory, SetsALabelOrChangesNothing) {
  const auto name = nameOf({{"EMS", "E"}, {"TopoSubnetwork", "node 1"}});
  const std::string label = "a label that needs memory of its own";
  expectAllOrNothing(host_, [&] { return host_.attributes().setUserLabel(name, label, false); });
  EXPECT_EQ(label, host_.model().labelOf(54, "node 1"));
}

TEST_F(OutOfMemory, MergesInformationOrChangesNothing) {
  const auto name = nameOf({{"EMS", "E"}, {"TopoSubnetwork", "node 1"}});
  const agent::ObjectKey key{54, "node 1"};
  const Pairs pairs = {{"a name that needs memory", "and a value that needs memory"}};
  int spared = 0;
  for (bool done = false; !done; ++spared) {
    ASSERT_LT(spared, 5000);
    auto info = nameOf(pairs);
    const Outcome outcome = [&] {
      const fakes::FailingNew failing(spared);
      return host_.attributes().setAdditionalInfo(name, info);
    }();
    done = outcome.code == agent::kSuccess;
    ASSERT_EQ(done ? pairs : Pairs{}, host_.store().additionalInfoOf(key)) << spared;
    ASSERT_EQ(pairs, pairsOf(info)) << spared;
  }
  EXPECT_LT(3, spared);
}

// An addition may move the entries of the indexes, which readers use. The reader is stopped while
// it makes room for its result.
TEST(NetworkModelMemory, PreparesNoAdditionWhileAReaderReads) {
  constexpr std::size_t kNodes = 1000;
  agent::NetworkModel model(wideNetwork(kNodes));
  std::promise<void> reading;
  std::promise<void> proceed;
  support::Task reader([&] {
    const fakes::PausingNew pause(
        [&] {
          reading.set_value();
          proceed.get_future().wait();
        },
        kNodes * sizeof(NS_DOMAIN::TopoNode_T));
    std::vector<NS_DOMAIN::TopoNode_T> nodes;
    model.appendTopoNodes(nodes);
    return nodes.size();
  });
  reading.get_future().wait();
  support::Task addition([&] {
    agent::Network more;
    more.networkElements.push_back({1, "an element", false});
    const agent::PreparedChange change = model.prepareAddition(more);
    return std::get<agent::AdditionEffect>(change.effect).tables.elements().size();
  });
  EXPECT_TRUE(addition.waits());
  proceed.set_value();
  EXPECT_EQ(kNodes, reader.get());
  EXPECT_EQ(1U, addition.get());
}

}  // namespace
