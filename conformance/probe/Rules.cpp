#include "conformance/probe/Rules.h"

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>

#include "conformance/probe/Calls.h"
#include "conformance/shared/ProbeProtocol.h"

namespace conformance::probe {
namespace {

constexpr Rule kInitRules[] = {
    {"bundle.constructor", "the constructor of ServiceObjectBase adds the object to the list",
     constructorListsTheObject},
    {"registration.unknown", "UnregisterMgr returns or raises for an unknown name",
     unknownManagersAreIgnored},
    {"registration.twice", "RegisterMgr refuses a name in use", managersCannotBeRegisteredTwice},
    {"registration.null", "RegisterServant refuses a null servant", nullServantsAreRefused},
    {"registration.reference", "the host drops the reference of a servant that it does not serve",
     servantsBelongToTheHost},
};

constexpr Rule kRequestRules[] = {
    {"bundle.interfaces", "DomainInterface and CorbaUtilInterface are published",
     interfacesArePublished},
    {"bundle.buffers", "CheckIFBuf finds what SetIFBuf has published, the first one first",
     buffersKeepTheOrder},
    {"bundle.lock", "CheckIFBuf works while _g_actualmutex is locked", buffersAreFoundUnderTheLock},
    {"bundle.base", "ServiceObjectBase lists the object, and deletes its interface",
     baseListsAndDeletes},
    {"naming.raises-nothing", "CorbaUtilInterface raises nothing for a malformed name",
     badNamesRaiseNothing},
    {"naming.numbers", "CorbaUtilInterface raises nothing for unknown and negative numbers",
     unknownNumbersRaiseNothing},
    {"naming.cleared", "a failed conversion clears the name and does not write the key",
     failedConversionsClearTheName},
    {"naming.types", "GetObjectType is 54 for the existing topology subnetworks only",
     typesTellSubnetworks},
    {"naming.subnetworks", "Name2Index is the inverse of ConvertTopoNodeIdToName",
     subnetworkNamesRoundTrip},
    {"naming.elements", "names of network elements are EMS and ManagedElement",
     elementNamesRoundTrip},
    {"naming.others", "names of optical elements and systems are EMS and ONE or OS",
     otherNamesHaveTheirClass},
    {"naming.roots", "the root marker of the domain has a name", rootMarkersHaveNames},
    {"naming.labels", "GetObjectLabelInfo raises nothing for an unknown object",
     labelsOfUnknownObjects},
    {"domain.facet", "GetFacet and its accessors never return null", facetIsComplete},
    {"domain.appends", "queries append to the holder", queriesAppend},
    {"domain.parents", "no node has the id 0, and the parents of the nodes have no cycle",
     parentsHaveNoCycle},
    {"domain.elements",
     "GetNEList returns the record of each index in their order, and skips an unknown index",
     elementsFollowTheIndexes},
    {"domain.shown", "GetNEIndexList(true) is a part of GetNEIndexList(false)",
     shownElementsAreElements},
    {"domain.clocks", "clock references have the form TEXT=NUMBER", clockReferencesHaveNumbers},
    {"failures.success", "ThrowException returns for code 0", successRaisesNothing},
    {"failures.type", "ThrowException raises ProcessingFailureException for every other code",
     failuresHaveTheUserException},
    {"failures.module", "the codes of the module become EXCPT_INTERNAL_ERROR",
     codesOfTheModuleAreInternalErrors},
    {"failures.text", "the text of ThrowException replaces the reason", textsReplaceTheReason},
    {"failures.reason", "ConstructException fills type and reason of every code",
     constructedFailuresHaveAReason},
    {"attributes.raise-nothing", "TECommonFunc returns a code and raises nothing",
     settersRaiseNothing},
    {"attributes.names", "TECommonFunc refuses unknown and malformed names", settersRefuseBadNames},
    {"attributes.operations", "onGetCapabilities lists both lists in order as Supported",
     capabilitiesListEveryOperation},
    {"configuration.ems", "EmsName raises nothing, and is the EMS of the names",
     emsNameIsThatOfTheNames},
    {"configuration.switch", "GetTestSwitch raises nothing", testSwitchCanBeRead},
    {"iterator.poa", "getIteratorPoa returns the POA of the iterators", iteratorPoaExists},
    {"iterator.unknown", "deactive_object ignores an unknown servant", unknownIteratorsAreIgnored},
    {"notification.content", "TANotification takes any content", notificationsTakeAnyContent},
    {"log.position", "GetTss returns one position for each thread", everyThreadHasAPosition},
    {"log.calls", "log calls return for every level, format and length", logCallsReturn},
    {"security.calls", "SecurityIF answers or raises", securityServiceAnswers},
    {"event.unknown", "UnSubscribe ignores a subscription that does not exist",
     unknownSubscriptionsAreIgnored},
    {"texts.split", "GetSpliteFDNData splits names into class and value", namesAreSplit},
    {"texts.class", "GetMoc returns the class of the last term", classesAreFound},
    {"texts.numbers", "GetIntegerValueByName and Str2Int read decimal numbers", numbersAreRead},
};

constexpr Rule kFiniRules[] = {
    {"unload.servants", "no servant of the module exists when fini is called", noServantIsLeft},
    {"unload.iterators", "no iterator of the module exists when fini is called", noIteratorIsLeft},
};

const char* nameOf(Outcome outcome) {
  return outcome == Outcome::kPass ? kPass : outcome == Outcome::kFail ? kFail : kSkip;
}

std::string variable(const char* name) {
  const char* const value = std::getenv(name);
  return value == nullptr ? "" : value;
}

// Opens the file for each line, so that the line survives the end of the process.
void writeLine(const std::string& line) {
  std::ofstream(variable(kReportVariable), std::ios::app) << line << std::endl;
}

// Tabs and line feeds separate the parts of the report.
std::string onOneLine(std::string text) {
  for (char& c : text) {
    c = c == '\t' || c == '\n' ? ' ' : c;
  }
  return text;
}

// Whether the list of rules, separated by commas, has the rule.
bool isIn(const std::string& list, const Rule& rule) {
  return (',' + list + ',').find(std::string(",") + rule.id + ',') != std::string::npos;
}

bool isLeftOut(const Rule& rule) {
  const std::string only = variable(kOnlyVariable);
  return isIn(variable(kSkipVariable), rule) || (!only.empty() && !isIn(only, rule));
}

}  // namespace

const RuleTable& initRules() {
  static const RuleTable table(std::begin(kInitRules), std::end(kInitRules));
  return table;
}

const RuleTable& requestRules() {
  static const RuleTable table(std::begin(kRequestRules), std::end(kRequestRules));
  return table;
}

const RuleTable& finiRules() {
  static const RuleTable table(std::begin(kFiniRules), std::end(kFiniRules));
  return table;
}

Result check(const Rule& rule) {
  Result result = {Outcome::kPass, rule.id, rule.text, ""};
  try {
    rule.check();
  } catch (const Broken& failure) {
    result.outcome = Outcome::kFail;
    result.reason = failure.what();
  } catch (const Skipped& reason) {
    result.outcome = Outcome::kSkip;
    result.reason = reason.what();
  } catch (...) {
    result.outcome = Outcome::kFail;
    result.reason = "the host raises " + describeCurrentException();
  }
  return result;
}

void checkIntoReport(const RuleTable& rules) {
  for (const Rule& rule : rules) {
    if (isLeftOut(rule)) {
      continue;
    }
    writeLine(std::string(kBegin) + '\t' + rule.id + '\t' + rule.text);
    const Result result = check(rule);
    const std::string line = std::string(nameOf(result.outcome)) + '\t' + rule.id;
    writeLine(result.reason.empty() ? line : line + '\t' + onOneLine(result.reason));
  }
}

}  // namespace conformance::probe
