#include "client/commands/SetAttribute.h"

#include "client/commands/ObjectNames.h"
#include "client/output/PrintFunctions.h"

namespace topoctl {
namespace {

using globaldefs::NVSList_T;

PrintFunction setUserLabel(const ManagerContext& context, const NVSList_T& object) {
  const Arguments& arguments = context.options.arguments;
  context.manager->setUserLabel(object, arguments.value.c_str(), arguments.unique);
  return printNothing;
}

PrintFunction setOwner(const ManagerContext& context, const NVSList_T& object) {
  context.manager->setOwner(object, context.options.arguments.value.c_str());
  return printNothing;
}

PrintFunction setNativeName(const ManagerContext& context, const NVSList_T& object) {
  context.manager->setNativeEMSName(object, context.options.arguments.value.c_str());
  return printNothing;
}

PrintFunction setInfo(const ManagerContext& context, const NVSList_T& object) {
  globaldefs::NVSList_T_var pairs = new NVSList_T(toList({context.options.arguments.pair}));
  context.manager->setAdditionalInfo(object, pairs.inout());
  return pairPrinter(pairs._retn(), context.options.style());
}

}  // namespace

PrintFunction setAttribute(const ManagerContext& context) {
  const NVSList_T object = objectName(context);
  switch (context.options.arguments.attribute) {
    case Attribute::kUserLabel:
      return setUserLabel(context, object);
    case Attribute::kOwner:
      return setOwner(context, object);
    case Attribute::kNativeName:
      return setNativeName(context, object);
    case Attribute::kInfo:
      return setInfo(context, object);
  }
  return printNothing;
}

}  // namespace topoctl
