#include <algorithm>
#include <string>
#include <thread>
#include <vector>

#include "conformance/checks/ClientChecks.h"
#include "conformance/checks/Views.h"

namespace conformance {
namespace {

using TopoManagementManager::NodeIterator_I_var;
using TopoManagementManager::NodeList_T_var;

constexpr std::chrono::milliseconds kPollInterval{10};

// A host may deactivate the servant after its reply.
void requireEnded(TopoManagementManager::NodeIterator_I_ptr iterator,
                  std::chrono::milliseconds timeout, const char* cause) {
  const auto deadline = std::chrono::steady_clock::now() + timeout;
  try {
    while (std::chrono::steady_clock::now() < deadline) {
      NodeList_T_var batch;
      iterator->next_n(0, batch.out());
      std::this_thread::sleep_for(kPollInterval);
    }
  } catch (const CORBA::OBJECT_NOT_EXIST&) {
    return;
  }
  throw Broken(std::string("the iterator still answers after ") + cause);
}

std::size_t differences(const std::string& a, const std::string& b) {
  std::size_t count = a.size() > b.size() ? a.size() - b.size() : b.size() - a.size();
  for (std::size_t i = 0; i < std::min(a.size(), b.size()); ++i) {
    count += a[i] == b[i] ? 0 : 1;
  }
  return count;
}

}  // namespace

void checkIteratorLength(Context& context) {
  CORBA::ULong left = 0;
  const NodeIterator_I_var iterator = openIterator(context.manager(), left);
  require(iterator->getLength() == left, "getLength is not the number of the remaining records");
  NodeList_T_var batch;
  require(iterator->next_n(0, batch.out()) && batch->length() == 0,
          "next_n(0) does not return true and an empty batch");
  require(iterator->getLength() == left, "getLength has changed");
  iterator->destroy();
}

void checkIteratorAfterLastBatch(Context& context) {
  CORBA::ULong left = 0;
  const NodeIterator_I_var iterator = openIterator(context.manager(), left);
  NodeList_T_var batch;
  require(!iterator->next_n(left, batch.out()), "next_n returns true for the last batch");
  require(batch->length() == left, "the last batch is not complete");
  requireEnded(iterator.in(), context.timeout, "its last batch");
}

void checkIteratorAfterDestroy(Context& context) {
  CORBA::ULong left = 0;
  const NodeIterator_I_var iterator = openIterator(context.manager(), left);
  iterator->destroy();
  requireEnded(iterator.in(), context.timeout, "destroy");
}

// Half a byte is one digit of the IOR. A counter changes few digits from one iterator to the next.
void checkIteratorKeys(Context& context) {
  constexpr std::size_t kDigitsOfARandomKey = 8;
  std::vector<std::string> references;
  for (int i = 0; i < 3; ++i) {
    CORBA::ULong left = 0;
    const NodeIterator_I_var iterator = openIterator(context.manager(), left);
    const CORBA::String_var text = context.server.get()->object_to_string(iterator.in());
    references.emplace_back(text.in());
    iterator->destroy();
  }
  for (std::size_t i = 1; i < references.size(); ++i) {
    if (differences(references[i - 1], references[i]) < kDigitsOfARandomKey) {
      throw Skipped("this host has predictable keys, which no contract forbids");
    }
  }
}

}  // namespace conformance
