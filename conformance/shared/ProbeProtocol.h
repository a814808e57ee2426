// The protocol between topo-conformance and the probe module.
//
// The probe serves as the manager "TopoManagement". A call of setAdditionalInfo with the object
// name (kCommandPair, COMMAND) runs a command on the thread of the request; the additional
// information carries the arguments to the probe and the answer back:
//   kList               the rules of the probe as pairs of id and text
//   the id of a rule    checks the rule: one pair of the outcome and the reason
//   other commands      see below
// The rules that the probe checks in init and fini are in a report, a file with one line for each
// step:
//   begin TAB ID TAB TEXT        before the check, so that a death of the process names the rule
//   pass TAB ID                  after the check
//   FAIL TAB ID TAB REASON
//   skip TAB ID TAB REASON

#ifndef CONFORMANCE_SHARED_PROBEPROTOCOL_H
#define CONFORMANCE_SHARED_PROBEPROTOCOL_H

namespace conformance::probe {

constexpr const char* kCommandPair = "conformance";

constexpr const char* kList = "list";

// The events that the handler has received since the previous call: pairs of the event id and the
// ids of the nodes, separated by a tab.
constexpr const char* kEvents = "events";
// The next event ends the handler's subscription to event 372 from another thread while the handler
// is running. kUnsubscription returns the result afterwards: "waited", "early", or "pending".
constexpr const char* kUnsubscribeInHandler = "unsubscribe-in-handler";
constexpr const char* kUnsubscription = "unsubscription";
// Subscribes the handler to event 372 again.
constexpr const char* kSubscribe = "subscribe";
// The largest number of handler calls that ran at the same time.
constexpr const char* kConcurrency = "concurrency";
// Asks the host twice to deactivate the iterator that getProtectSubnetworkViewInfo has returned.
constexpr const char* kDropIterator = "drop-iterator";
// The number of the probe's iterator servants that exist.
constexpr const char* kIterators = "iterators";

// Whether the module may receive events: "allowed" or "refused".
constexpr const char* kEventAccess = "event-access";

// Names of outcomes.
constexpr const char* kPass = "pass";
constexpr const char* kFail = "FAIL";
constexpr const char* kSkip = "skip";
constexpr const char* kBegin = "begin";

// The ids of the rules that fini checks begin with this text.
constexpr const char* kFiniPrefix = "unload.";

// Environment variables of the host.
constexpr const char* kReportVariable = "TOPO_CONFORMANCE_REPORT";  // path of the report
// Rules that init and fini leave out, separated by commas.
constexpr const char* kSkipVariable = "TOPO_CONFORMANCE_SKIP";
// The rules that init and fini check, separated by commas; all rules when empty.
constexpr const char* kOnlyVariable = "TOPO_CONFORMANCE_ONLY";
// While the file of this path exists, init fails at its end.
constexpr const char* kFailVariable = "TOPO_CONFORMANCE_FAIL_INIT";

}  // namespace conformance::probe

#endif
