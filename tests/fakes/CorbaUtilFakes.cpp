#include <mutex>

#include "tests/fakes/Agent.h"
#include "tests/fakes/CorbaUtil.h"
#include "tests/fakes/Journal.h"

namespace NS_CORBA {

CorbaUtilInterface::~CorbaUtilInterface() = default;

}  // namespace NS_CORBA

namespace fakes {
namespace {

using NS_CORBA::DomainObjectKey;

CorbaUtilAnswers& answers = *new CorbaUtilAnswers;

void setPair(globaldefs::NVSList_T& name, CORBA::ULong at, const std::string& pairName,
             const std::string& value) {
  name[at].name = CORBA::string_dup(pairName.c_str());
  name[at].value = CORBA::string_dup(value.c_str());
}

CORBA::ULong fill(globaldefs::NVSList_T& name, CORBA::ULong code, const std::string& className,
                  const std::string& value) {
  name.length(code == 0 ? 2 : 1);
  setPair(name, 0, "EMS", agent().emsName);
  if (code == 0) {
    setPair(name, 1, className, value);
  }
  return code;
}

std::string printed(const DomainObjectKey& key) {
  return std::to_string(key.first) + ", " + std::to_string(key.objectNumber);
}

// Conversions run on several threads at once.
void noteLabelRequest(const NS_CORBA::ObjectLabelInfo& info) {
  static std::mutex mutex;
  const std::lock_guard<std::mutex> lock(mutex);
  answers.labelRequests.push_back("'" + info.userLabel + "' '" + info.label2 + "' '" + info.label3 +
                                  "' '" + info.label4 + "'");
}

class FakeCorbaUtil final : public NS_CORBA::CorbaUtilInterface {
 public:
  int GetObjectType(const globaldefs::NVSList_T& name) override {
    fakes::called("GetObjectType", fakes::printed(name));
    return answers.objectType;
  }

  CORBA::ULong ConvertNEIndexToName(globaldefs::NVSList_T& name, DomainObjectKey& key) override {
    const CORBA::ULong code = fakes::called("ConvertNEIndexToName", printed(key));
    key.first += answers.addedToKey;
    return answers.leaveNamesAlone
               ? code
               : fill(name, code, "ManagedElement", std::to_string(key.objectNumber));
  }

  CORBA::ULong ConvertONEIndexToName(globaldefs::NVSList_T& name, DomainObjectKey& key) override {
    const CORBA::ULong code = fakes::called("ConvertONEIndexToName", printed(key));
    return fill(name, code, "OpticalElement", std::to_string(key.objectNumber));
  }

  CORBA::ULong ConvertOSIndexToName(globaldefs::NVSList_T& name, std::int32_t& number) override {
    const CORBA::ULong code = fakes::called("ConvertOSIndexToName", std::to_string(number));
    return fill(name, code, "OperationsSystem", std::to_string(number));
  }

  CORBA::ULong ConvertTopoNodeIdToName(globaldefs::NVSList_T& name,
                                       const std::string& id) override {
    const CORBA::ULong code = fakes::called("ConvertTopoNodeIdToName", quoted(id));
    if (code == 0 && answers.emptyTopoNodeNames) {
      name.length(0);
      return 0;
    }
    return fill(name, code, "TopoSubnetwork", id);
  }

  CORBA::ULong Name2Index(std::string& id, const globaldefs::NVSList_T& name) override {
    const CORBA::ULong code = fakes::called("Name2Index", fakes::printed(name));
    id = answers.idOfName;
    if (id.empty() && name.length() != 0) {
      id = name[name.length() - 1].value.in();
    }
    return code;
  }

  CORBA::ULong GetObjectLabelInfo(NS_CORBA::ObjectLabelInfo& info, const std::string& id,
                                  int type) override {
    const CORBA::ULong code =
        fakes::called("GetObjectLabelInfo", quoted(id) + ", " + std::to_string(type));
    noteLabelRequest(info);
    if (!answers.leaveLabelsAlone) {
      info = answers.labels;
    }
    return code;
  }
};

}  // namespace

CorbaUtilAnswers& corbaUtilAnswers() {
  return answers;
}

globaldefs::NVSList_T nameOf(const std::string& className, const std::string& value) {
  globaldefs::NVSList_T name;
  fill(name, 0, className, value);
  return name;
}

NS_CORBA::CorbaUtilInterface& corbaUtil() {
  static NS_CORBA::CorbaUtilInterface& util = *makeCorbaUtil();
  return util;
}

NS_CORBA::CorbaUtilInterface* makeCorbaUtil() {
  return new FakeCorbaUtil;
}

void resetCorbaUtil() {
  answers = CorbaUtilAnswers();
}

}  // namespace fakes
