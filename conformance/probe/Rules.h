// The rules that the probe checks from inside the host.

#ifndef CONFORMANCE_PROBE_RULES_H
#define CONFORMANCE_PROBE_RULES_H

#include <vector>

#include "conformance/shared/Verdict.h"

namespace conformance::probe {

// One rule of the contracts. `check` throws Broken or Skipped; the host must not raise any other
// exception.
struct Rule {
  const char* id;
  const char* text;
  void (*check)();
};

using RuleTable = std::vector<Rule>;

// All rules, by the call in which the probe checks them.
const RuleTable& initRules();
const RuleTable& requestRules();
const RuleTable& finiRules();

// Checks a rule. Never throws except for std::bad_alloc. Thread-safety: that of the rule.
Result check(const Rule& rule);

// Checks the rules and writes each step to the report (ProbeProtocol.h).
void checkIntoReport(const RuleTable& rules);

// ---- the functions of the rules, by file

// AttributeRules.cpp
void settersRaiseNothing();
void settersRefuseBadNames();
void capabilitiesListEveryOperation();

// BundleRules.cpp
void constructorListsTheObject();
void baseListsAndDeletes();
void interfacesArePublished();
void buffersKeepTheOrder();
void buffersAreFoundUnderTheLock();

// DomainRules.cpp
void facetIsComplete();
void queriesAppend();
void parentsHaveNoCycle();
void elementsFollowTheIndexes();
void shownElementsAreElements();
void clockReferencesHaveNumbers();

// FailureRules.cpp
void successRaisesNothing();
void codesOfTheModuleAreInternalErrors();
void failuresHaveTheUserException();
void textsReplaceTheReason();
void constructedFailuresHaveAReason();

// LoggingRules.cpp
void everyThreadHasAPosition();
void logCallsReturn();

// NamingRules.cpp
void badNamesRaiseNothing();
void unknownNumbersRaiseNothing();
void failedConversionsClearTheName();
void subnetworkNamesRoundTrip();
void elementNamesRoundTrip();
void otherNamesHaveTheirClass();
void typesTellSubnetworks();
void rootMarkersHaveNames();
void labelsOfUnknownObjects();
void emsNameIsThatOfTheNames();

// NotificationRules.cpp
void notificationsTakeAnyContent();
void unknownIteratorsAreIgnored();
void iteratorPoaExists();

// RegistrationRules.cpp
void unknownManagersAreIgnored();
void managersCannotBeRegisteredTwice();
void nullServantsAreRefused();
void servantsBelongToTheHost();
void testSwitchCanBeRead();
void noServantIsLeft();
void noIteratorIsLeft();

// SecurityRules.cpp
void securityServiceAnswers();
void unknownSubscriptionsAreIgnored();
bool eventsAreAllowed();  // no rule: the answer to kEventAccess

// TextRules.cpp
void namesAreSplit();
void classesAreFound();
void numbersAreRead();

}  // namespace conformance::probe

#endif
