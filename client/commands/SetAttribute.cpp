#include "client/commands/SetAttribute.h"

#include <algorithm>

#include "client/commands/ObjectNames.h"
#include "client/output/PrintFunctions.h"

namespace topoctl {
namespace {

using globaldefs::NVSList_T;

void printNothing(std::ostream&) {}

PrintFunction setUserLabel(const Session& session, const NVSList_T& object) {
  const Arguments& arguments = session.options.arguments;
  session.manager->setUserLabel(object, arguments.value.c_str(), arguments.unique);
  return printNothing;
}

PrintFunction setOwner(const Session& session, const NVSList_T& object) {
  session.manager->setOwner(object, session.options.arguments.value.c_str());
  return printNothing;
}

PrintFunction setNativeName(const Session& session, const NVSList_T& object) {
  session.manager->setNativeEMSName(object, session.options.arguments.value.c_str());
  return printNothing;
}

PrintFunction setInfo(const Session& session, const NVSList_T& object) {
  globaldefs::NVSList_T_var pairs = new NVSList_T(toList({session.options.arguments.pair}));
  session.manager->setAdditionalInfo(object, pairs.inout());
  return pairPrinter(pairs._retn(), session.options.format);
}

}  // namespace

const std::vector<Attribute>& attributes() {
  static const std::vector<Attribute> table = {
      {"user-label", false, true, setUserLabel},
      {"owner", false, false, setOwner},
      {"native-name", false, false, setNativeName},
      {"info", true, false, setInfo},
  };
  return table;
}

PrintFunction setAttribute(const Session& session) {
  const std::string& name = session.options.arguments.attribute;
  const auto attribute =
      std::find_if(attributes().begin(), attributes().end(),
                   [&name](const Attribute& candidate) { return candidate.name == name; });
  return attribute->set(session, objectName(session));
}

}  // namespace topoctl
