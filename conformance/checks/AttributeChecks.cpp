#include <map>
#include <string>

#include "conformance/checks/OperatorChecks.h"
#include "conformance/checks/Refusals.h"
#include "conformance/checks/TemporaryNode.h"
#include "conformance/checks/Views.h"

namespace conformance {
namespace {

using globaldefs::NVSList_T;
using globaldefs::ProcessingFailureException;

// Returns false when the label is in use; other exceptions pass.
bool setsLabel(Context& context, const NVSList_T& name, const std::string& label, bool isUnique) {
  try {
    skipIfNotSupported("setUserLabel",
                       [&] { context.manager()->setUserLabel(name, label.c_str(), isUnique); });
    return true;
  } catch (const ProcessingFailureException& refusal) {
    if (refusal.exceptionType != globaldefs::EXCPT_USERLABEL_IN_USE) {
      throw;
    }
    return false;
  }
}

// Throws Skipped when the host stores no labels.
void setFirstLabel(Context& context, const NVSList_T& name, const std::string& label) {
  try {
    require(setsLabel(context, name, label, false), "a label is in use without enforceUniqueness");
  } catch (const ProcessingFailureException&) {
    throw Skipped("the host refuses user labels");
  }
}

// A refusal for another reason than the label in use is no failure.
void requireFreeForOtherClasses(Context& context, const std::string& label) {
  for (const auto& node : readTopology(context.manager())) {
    if (node.name.length() != 2 || node.name[1].name.in() != std::string("ManagedElement")) {
      continue;
    }
    try {
      require(setsLabel(context, node.name, label, true),
              "the label of a subnetwork is refused to an element");
      setsLabel(context, node.name, "", false);
    } catch (const ProcessingFailureException&) {
      // The host stores no labels of elements.
    }
    return;
  }
}

using Texts = std::multimap<std::string, std::string>;

// Sets one pair, and returns the pairs of the reply.
Texts setInfo(Context& context, const NVSList_T& name, const Texts::value_type& pair) {
  NVSList_T info;
  append(info, pair.first, pair.second);
  try {
    skipIfNotSupported("setAdditionalInfo",
                       [&] { context.manager()->setAdditionalInfo(name, info); });
  } catch (const ProcessingFailureException& refusal) {
    throw Skipped(std::string("the host refuses additional information: ") +
                  refusal.errorReason.in());
  }
  Texts pairs;
  for (CORBA::ULong i = 0; i < info.length(); ++i) {
    pairs.emplace(info[i].name.in(), info[i].value.in());
  }
  return pairs;
}

}  // namespace

// A view of nodes does not have the labels: a label is stored when it is in use.
void checkUserLabel(Context& context) {
  const TemporaryNode first(context, "conformance label 1");
  const TemporaryNode second(context, "conformance label 2");
  const std::string label = "conformance Ω";
  setFirstLabel(context, first.name(), label);
  require(!setsLabel(context, second.name(), label, true),
          "the label of another subnetwork is accepted with enforceUniqueness");
  require(setsLabel(context, first.name(), label, true), "an object is refused its own label");
  requireFreeForOtherClasses(context, label);
  require(setsLabel(context, first.name(), "", true), "an empty label is in use");
  require(setsLabel(context, second.name(), label, true), "a removed label is still in use");
}

// A host may return the request unchanged, or update the list.
void checkAdditionalInfo(Context& context) {
  struct Step {
    Texts::value_type pair;
    Texts merged;
  };
  const Step steps[] = {{{"conformance 1", "x"}, {{"conformance 1", "x"}}},
                        {{"conformance 2", "Ω"}, {{"conformance 1", "x"}, {"conformance 2", "Ω"}}},
                        {{"conformance 1", "y"}, {{"conformance 1", "y"}, {"conformance 2", "Ω"}}}};
  const TemporaryNode node(context, "conformance information");
  bool isMerged = true;
  for (const Step& step : steps) {
    const Texts reply = setInfo(context, node.name(), step.pair);
    require(reply == step.merged || reply == Texts{step.pair},
            "the reply for \"" + step.pair.first + '=' + step.pair.second +
                "\" has neither the pairs of the request nor the merged pairs");
    isMerged = isMerged && reply == step.merged;
  }
  if (!isMerged) {
    throw Skipped("the host returns the pairs of the request, as it may");
  }
}

}  // namespace conformance
