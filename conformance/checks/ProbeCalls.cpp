#include "conformance/checks/ProbeCalls.h"

#include <cstdio>
#include <fstream>
#include <thread>

#include "conformance/Records.h"
#include "conformance/shared/ProbeProtocol.h"

namespace conformance {
namespace {

constexpr std::chrono::milliseconds kPollInterval{20};

// Repeats until the condition is true; false after the timeout.
template <typename Condition>
bool eventually(std::chrono::milliseconds timeout, Condition condition) {
  const auto deadline = std::chrono::steady_clock::now() + timeout;
  while (!condition()) {
    if (std::chrono::steady_clock::now() >= deadline) {
      return false;
    }
    std::this_thread::sleep_for(kPollInterval);
  }
  return true;
}

std::string firstValue(const Pairs& pairs) {
  return pairs.empty() ? std::string() : pairs.front().second;
}

// Waits for the event of a request to the operator, and checks that it has the node only.
void requireEvent(Context& context, const std::string& eventId, const std::string& nodeId) {
  Pairs events;
  const bool arrived = eventually(context.timeout, [&] {
    const Pairs more = callProbe(context, probe::kEvents);
    events.insert(events.end(), more.begin(), more.end());
    return !events.empty();
  });
  require(arrived, "no event " + eventId + " arrives");
  require(events.size() == 1, std::to_string(events.size()) + " events arrive, not 1");
  require(events.front().first == eventId,
          "event " + events.front().first + " arrives instead of " + eventId);
  require(events.front().second == nodeId,
          "event " + eventId + " has the nodes \"" + events.front().second + '"');
}

// An iterator of the probe. Throws Skipped when the host refuses iterators.
TopoManagementManager::NodeIterator_I_ptr openProbeIterator(Context& context) {
  TopoManagementManager::NodeList_T_var nodes;
  TopoManagementManager::NodeIterator_I_var iterator;
  try {
    context.manager()->getProtectSubnetworkViewInfo(1, nodes.out(), iterator.out());
  } catch (const globaldefs::ProcessingFailureException& refusal) {
    if (refusal.exceptionType != globaldefs::EXCPT_TOO_MANY_OPEN_ITERATORS) {
      throw;
    }
    throw Skipped(std::string("the host refuses iterators: ") + refusal.errorReason.in());
  }
  return iterator._retn();
}

void openIteratorIfPossible(Context& context) {
  try {
    const TopoManagementManager::NodeIterator_I_var iterator = openProbeIterator(context);
  } catch (const Skipped&) {
    // The rule needs no iterator.
  }
}

// While this object exists, the init of the probe fails.
class FailingInit {
 public:
  explicit FailingInit(const Context& context) : file_(context.failInitFile) {
    std::ofstream(file_).put('\n');
  }
  ~FailingInit() { std::remove(file_.c_str()); }
  FailingInit(const FailingInit&) = delete;
  FailingInit& operator=(const FailingInit&) = delete;

 private:
  const std::string file_;
};

void reloadWithFailingInit(Context& context) {
  const FailingInit failing(context);
  try {
    context.host.reload();
  } catch (const NoAnswer&) {
    throw;
  } catch (const OperationFailed&) {
    return;
  }
  throw Broken("the host reports a success for a module whose init raises an exception");
}

}  // namespace

Pairs callProbe(Context& context, const std::string& command) {
  globaldefs::NVSList_T name;
  append(name, probe::kCommandPair, command);
  globaldefs::NVSList_T info;
  context.manager()->setAdditionalInfo(name, info);
  Pairs answer;
  for (CORBA::ULong i = 0; i < info.length(); ++i) {
    answer.emplace_back(info[i].name.in(), info[i].value.in());
  }
  return answer;
}

void checkInProbe(Context& context, const std::string& rule) {
  const Pairs answer = callProbe(context, rule);
  require(!answer.empty(), "the manager does not answer as the probe");
  if (answer.front().first == probe::kSkip) {
    throw Skipped(answer.front().second);
  }
  require(answer.front().first == probe::kPass, answer.front().second);
}

bool refusesEvents(Context& context) {
  if (!context.host.isOwn()) {
    return false;
  }
  try {
    context.host.start(Plugin::kProbe);
    return firstValue(callProbe(context, probe::kEventAccess)) == "refused";
  } catch (const std::exception&) {
    return false;
  } catch (const CORBA::Exception&) {
    return false;
  }
}

void checkEventContents(Context& context) {
  const std::string id = "conformance event";
  callProbe(context, probe::kEvents);
  context.host.op().create(id);
  requireEvent(context, "372", id);
  context.host.op().change(id);
  requireEvent(context, "374", id);
  context.host.op().remove(id);
  requireEvent(context, "373", id);
}

void checkEventConcurrency(Context& context) {
  constexpr std::size_t kNodes = 10;
  for (std::size_t i = 0; i < kNodes; ++i) {
    const std::string id = "conformance event " + std::to_string(i);
    context.host.op().create(id);
    context.host.op().remove(id);
  }
  std::size_t arrived = 0;
  const bool complete = eventually(context.timeout, [&] {
    arrived += callProbe(context, probe::kEvents).size();
    return arrived >= 2 * kNodes;
  });
  require(complete, std::to_string(arrived) + " events arrive, not " + std::to_string(2 * kNodes));
  const std::string most = firstValue(callProbe(context, probe::kConcurrency));
  require(most == "1", most + " calls of one handler ran at the same time");
}

void checkUnsubscription(Context& context) {
  const std::string id = "conformance unsubscription";
  callProbe(context, probe::kSubscribe);
  callProbe(context, probe::kUnsubscribeInHandler);
  context.host.op().create(id);
  std::string result;
  eventually(context.timeout, [&] {
    result = firstValue(callProbe(context, probe::kUnsubscription));
    return result != "pending";
  });
  callProbe(context, probe::kSubscribe);
  context.host.op().remove(id);
  require(result != "pending", "UnSubscribe does not return while a handler runs or has run");
  require(result == "waited", "UnSubscribe returned while the handler was running");
}

void checkNoEventAfterUnsubscription(Context& context) {
  const std::string id = "conformance silence";
  callProbe(context, probe::kUnsubscribeInHandler);
  context.host.op().create(id + " 1");
  const bool ended = eventually(context.timeout, [&] {
    return firstValue(callProbe(context, probe::kUnsubscription)) != "pending";
  });
  callProbe(context, probe::kEvents);
  context.host.op().create(id + " 2");
  context.host.op().remove(id + " 1");  // event 373 is still subscribed, and follows 372
  Pairs events;
  eventually(context.timeout, [&] {
    const Pairs more = callProbe(context, probe::kEvents);
    events.insert(events.end(), more.begin(), more.end());
    return !events.empty();
  });
  callProbe(context, probe::kSubscribe);
  context.host.op().remove(id + " 2");
  require(ended, "UnSubscribe does not return");
  require(!events.empty(), "no event 373 arrives");
  require(events.front().first == "373", "event 372 arrives after UnSubscribe has returned");
}

void checkIteratorLife(Context& context) {
  const TopoManagementManager::NodeIterator_I_var iterator = openProbeIterator(context);
  require(!CORBA::is_nil(iterator.in()), "the reference of an added iterator is nil");
  require(iterator->getLength() == 42, "another servant answers at the reference of an iterator");
  callProbe(context, probe::kDropIterator);
  const bool isDeleted = eventually(
      context.timeout, [&] { return firstValue(callProbe(context, probe::kIterators)) == "0"; });
  require(isDeleted, "the servant is not deleted after deactive_object");
  try {
    iterator->getLength();
  } catch (const CORBA::OBJECT_NOT_EXIST&) {
    return;
  }
  throw Broken("the iterator answers after deactive_object");
}

// The iterator that is open at the reload is for the rule unload.iterators.
// Events after the failed init must not reach the handler that the init has subscribed: its code is
// unmapped.
void checkFailedInit(Context& context) {
  const std::string id = "conformance failed init";
  openIteratorIfPossible(context);
  reloadWithFailingInit(context);
  context.host.op().create(id);
  context.host.op().remove(id);
  context.host.load();
  callProbe(context, probe::kEvents);
  checkEventContents(context);
}

void checkUnmappedAfterFailedInit(Context& context) {
  reloadWithFailingInit(context);
  try {
    context.host.op().unload();
  } catch (const Skipped&) {
    // A console has no unload. After a failed reload nothing is loaded.
  }
  const std::size_t mapped = context.host.mappedFiles();
  context.host.load();
  require(mapped == 0, context.host.pluginFile() + " is mapped after a failed init and an unload");
}

}  // namespace conformance
