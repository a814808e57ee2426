#include <iterator>

#include "conformance/Check.h"
#include "conformance/checks/ClientChecks.h"
#include "conformance/checks/OperatorChecks.h"
#include "conformance/checks/ProbeCalls.h"

namespace conformance {

namespace {

constexpr Plugin kModule = Plugin::kModule;
constexpr Plugin kProbe = Plugin::kProbe;

constexpr Check kChecks[] = {
    {"link.symbols", "the host defines every symbol of the module (LD_BIND_NOW=1)", kModule,
     checkBoundSymbols},
    {"views.interfaces", "the manager is a TopoMgr_I and a Common_I", kModule, checkInterfaces},
    {"views.records", "names and texts of all views are well formed", kModule,
     checkWellFormedRecords},
    {"views.unique", "a view of topology nodes has no name twice", kModule, checkUniqueNames},
    {"views.batches", "every view is the same in batches and in one reply", kModule, checkBatches},
    {"views.protection", "the protection view has the nodes of the topology view", kModule,
     checkProtectionView},
    {"views.below", "the view below a subnetwork has all its descendants and no other nodes",
     kModule, checkViewBelow},
    {"iterators.length", "getLength is constant, and a batch of 0 records ends nothing", kModule,
     checkIteratorLength},
    {"iterators.last-batch", "an iterator does not exist after its last batch", kModule,
     checkIteratorAfterLastBatch},
    {"iterators.destroy", "an iterator does not exist after destroy", kModule,
     checkIteratorAfterDestroy},
    {"iterators.keys", "the keys of iterators are random", kModule, checkIteratorKeys},
    {"names.known", "the view below a node accepts subnetworks and refuses elements", kModule,
     checkKnownNames},
    {"names.unknown", "the view below an unknown name is refused as invalid input", kModule,
     checkUnknownNames},
    {"names.malformed", "the view below a malformed name is refused as invalid input", kModule,
     checkMalformedNames},
    {"names.setters", "setters refuse unknown and malformed names", kModule,
     checkSettersOfBadNames},
    {"attributes.capabilities", "getCapabilities lists each of its operations once", kModule,
     checkCapabilities},
    {"attributes.user-label", "a user label is unique in its object class on request", kModule,
     checkUserLabel},
    {"attributes.additional-info",
     "setAdditionalInfo returns the pairs of the request or the merged list", kModule,
     checkAdditionalInfo},
    {"texts.utf8", "texts are UTF-8 in requests and replies", kModule, checkUtf8},
    {"events.created", "a created node has one notification with its record", kModule,
     checkCreation},
    {"events.changed", "a renamed node has a notification with its native name", kModule,
     checkChange},
    {"events.deleted", "a deleted node has a notification", kModule, checkDeletion},
    {"events.layout", "notifications have the fields of NotificationLayout.h", kModule,
     checkLayout},
    {"reload.serves", "the manager answers the same after each of 20 reloads", kModule,
     checkReloads},
    {"reload.reference", "the manager's reference works after a reload", kModule,
     checkReferenceAfterReload},
    {"reload.iterators", "an iterator does not exist after a reload", kModule,
     checkIteratorAfterReload},
    {"reload.mapped", "nothing of the module stays mapped after an unload", kModule,
     checkNothingMapped},
    {"reload.events", "an event after reloads makes one notification", kModule,
     checkEventsAfterReload},
    {"host.end", "the host ends with status 0 on request", kModule, checkEnd},
    {"event.contents", "events 372, 374 and 373 have the node of the change", kProbe,
     checkEventContents},
    {"event.serial", "a handler gets one event at a time", kProbe, checkEventConcurrency},
    {"event.unsubscribe-waits", "UnSubscribe waits for a handler that is running", kProbe,
     checkUnsubscription},
    {"event.unsubscribe-ends", "no event arrives after UnSubscribe has returned", kProbe,
     checkNoEventAfterUnsubscription},
    {"iterator.life", "an added iterator serves until deactive_object, and is then deleted", kProbe,
     checkIteratorLife},
    {"reload.failed-init", "the host recovers from an init that raises an exception", kProbe,
     checkFailedInit},
    {"reload.failed-init-mapped", "nothing of the module stays mapped after a failed init", kProbe,
     checkUnmappedAfterFailedInit},
};

}  // namespace

const std::vector<Check>& checks() {
  static const std::vector<Check> table(std::begin(kChecks), std::end(kChecks));
  return table;
}

}  // namespace conformance
