#include <string>
#include <vector>

#include "conformance/Records.h"
#include "conformance/checks/OperatorChecks.h"
#include "conformance/checks/ProbeCalls.h"
#include "conformance/checks/Refusals.h"
#include "conformance/checks/TemporaryNode.h"
#include "conformance/checks/Views.h"
#include "idl/NotificationLayout.h"
#include "idl/ObjectKeys.h"

namespace conformance {
namespace {

namespace layout = notification_layout;

using TopoManagementManager::Node_T;

// A second notification of a change arrives within this time after the first one.
constexpr std::chrono::milliseconds kDuplicateTime{100};

// Lets the notifications of the host reach the receiver.
class Subscription {
 public:
  explicit Subscription(Context& context) {
    context.receiver.clear();
    if (context.host.feedsConsumer()) {
      return;
    }
    try {
      subscribe(context);
    } catch (const CORBA::OBJECT_NOT_EXIST&) {
      context.lacksConsumer = true;
      throw Skipped(std::string("the host has no session at the key ") + object_key::kSession +
                    " and no {consumer} in its command");
    }
  }

  ~Subscription() {
    try {
      if (!CORBA::is_nil(subscription_.in())) {
        subscription_->unsubscribe();
      }
    } catch (const CORBA::Exception&) {
      // The host has ended.
    }
  }

  Subscription(const Subscription&) = delete;
  Subscription& operator=(const Subscription&) = delete;

 private:
  void subscribe(Context& context) {
    const CORBA::Object_var object = context.host.objectBeside(object_key::kSession);
    const TopoAgent::Session_I_var session = TopoAgent::Session_I::_narrow(object.in());
    require(!CORBA::is_nil(session.in()), "the session is not a Session_I");
    if (session->getEventAccess() != TopoAgent::EA_ALLOWED) {
      throw Skipped("the host does not let the module receive events");
    }
    subscription_ = session->subscribe(context.receiver.reference(), "");
  }

  TopoAgent::Subscription_I_var subscription_;
};

// No notification about a node has arrived. As Broken.
class NoNotification : public Broken {
 public:
  using Broken::Broken;
};

// Runs a check of notifications. Throws Skipped when the host does not let the module receive
// events: no notification arrives then, and the probe finds the reason.
void withNotifications(Context& context, void (*check)(Context&)) {
  const char* const reason = "the host does not let the module receive events";
  if (context.refusesEvents) {
    throw Skipped(reason);
  }
  try {
    const Subscription subscription(context);
    check(context);
  } catch (const NoNotification&) {
    context.refusesEvents = refusesEvents(context);
    if (!context.refusesEvents) {
      throw;
    }
    throw Skipped(reason);
  }
}

// The native name of the node in the topology view.
std::string nativeNameOf(Context& context, const globaldefs::NVSList_T& name) {
  for (const Node_T& node : readTopology(context.manager())) {
    if (toText(node.name) == toText(name)) {
      return node.nativeEMSName.in();
    }
  }
  throw Broken("the topology view does not have the created node \"" + toText(name) + '"');
}

// Takes the notification of one change. Throws NoNotification, and Broken for a second
// notification.
Notification nextAbout(Context& context, const TemporaryNode& node) {
  const std::string name = toText(node.name());
  const auto taken = context.receiver.takeUntil(name, context.timeout);
  if (taken.empty()) {
    throw NoNotification("no notification about the node \"" + name + "\" arrives");
  }
  require(context.receiver.takeUntil(name, kDuplicateTime).empty(),
          "two notifications about the node \"" + name + "\" arrive, not one");
  return taken.back();
}

void requireType(const Notification& notification, const char* type) {
  require(notification.type == type,
          "a notification has the type " + notification.type + ", not " + type);
}

void creationHasARecord(Context& context) {
  const TemporaryNode node(context, "conformance creation");
  const Notification notification = nextAbout(context, node);
  requireType(notification, layout::kObjectCreation);
  require(notification.hasNode, "the notification of a creation has no Node_T");
  require(notification.name == nativeNameOf(context, node.name()),
          "the node of the notification has another native name than the view");
}

void changeHasTheNativeName(Context& context) {
  const TemporaryNode node(context, "conformance change");
  nextAbout(context, node);
  context.host.op().change(node.id());
  const Notification notification = nextAbout(context, node);
  requireType(notification, layout::kAttributeValueChange);
  require(notification.attribute == "nativeEMSName",
          "the only attribute of the notification is not nativeEMSName");
  require(notification.name == nativeNameOf(context, node.name()),
          "the notification has another native name than the view");
}

void deletionIsNotified(Context& context) {
  TemporaryNode node(context, "conformance deletion");
  nextAbout(context, node);
  node.remove();
  requireType(nextAbout(context, node), layout::kObjectDeletion);
}

void notificationsHaveTheLayout(Context& context) {
  TemporaryNode node(context, "conformance layout");
  std::vector<Notification> notifications = {nextAbout(context, node)};
  context.host.op().change(node.id());
  notifications.push_back(nextAbout(context, node));
  node.remove();
  notifications.push_back(nextAbout(context, node));
  long long previous = -1;
  for (const Notification& notification : notifications) {
    require(notification.layoutFault.empty(),
            "in " + notification.type + ' ' + notification.layoutFault);
    require(notification.id > previous, "the notification ids do not rise");
    previous = notification.id;
  }
}

// A handler of an earlier load that is still subscribed would add a second notification.
void eventAfterReloadIsNotifiedOnce(Context& context) {
  context.host.reload();
  const TemporaryNode first(context, "conformance reload 1");
  const TemporaryNode second(context, "conformance reload 2");
  const auto taken = context.receiver.takeUntil(toText(second.name()), context.timeout);
  if (taken.empty()) {
    throw NoNotification("no notification arrives after a reload");
  }
  int count = 0;
  for (const Notification& notification : taken) {
    count += notification.object == toText(first.name()) ? 1 : 0;
  }
  require(count == 1,
          "an event after a reload makes " + std::to_string(count) + " notifications, not 1");
}

}  // namespace

void checkCreation(Context& context) {
  withNotifications(context, creationHasARecord);
}

void checkChange(Context& context) {
  withNotifications(context, changeHasTheNativeName);
}

void checkDeletion(Context& context) {
  withNotifications(context, deletionIsNotified);
}

void checkLayout(Context& context) {
  withNotifications(context, notificationsHaveTheLayout);
}

void checkEventsAfterReload(Context& context) {
  withNotifications(context, eventAfterReloadIsNotifiedOnce);
}

void checkUtf8(Context& context) {
  const TemporaryNode node(context, "conformance München Ω 漢字");
  nativeNameOf(context, node.name());
  const std::string text = "Zürich Ω 漢字";
  try {
    skipIfNotSupported("setNativeEMSName",
                       [&] { context.manager()->setNativeEMSName(node.name(), text.c_str()); });
  } catch (const globaldefs::ProcessingFailureException&) {
    return;  // a host need not support the setter
  }
  const std::string shown = nativeNameOf(context, node.name());
  require(shown == text, "the view shows \"" + shown + "\" for \"" + text + '"');
}

}  // namespace conformance
