// The functions and singletons of the agent's contracts.

#include <cstdarg>
#include <cstdio>
#include <map>
#include <mutex>
#include <utility>

#include "platform/agent/Failures.h"
#include "platform/agent/Logging.h"
#include "platform/agent/TAIteratorHelper.h"
#include "platform/agent/TANotification.h"
#include "platform/agent/TECommonFunc.h"
#include "tests/fakes/Agent.h"
#include "tests/fakes/Journal.h"

namespace fakes {
namespace {

struct State {
  std::map<std::string, NS_CORBA::MgrFactory*> factories;
  std::vector<POA_common::Common_I*> servants;
  PortableServer::POA_var iteratorPoa;
  std::vector<PortableServer::ServantBase*> iterators;
  PortableServer::ServantBase* offeredIterator = nullptr;
  std::vector<Notification> notifications;
  std::vector<ReportedFailure> failures;
};

std::mutex mutex;
State& state = *new State;  // guarded by mutex
Agent& answers = *new Agent;

std::string here() {
  const NS_CORBA::LogPosition* position = NS_CORBA::GetTss();
  return " at " + position->file + ":" + std::to_string(position->line) + " " + position->function;
}

std::string format(const char* text, va_list arguments) {
  va_list copy;
  va_copy(copy, arguments);
  const int length = std::vsnprintf(nullptr, 0, text, copy);
  va_end(copy);
  std::string result(static_cast<std::size_t>(length) + 1, '\0');
  std::vsnprintf(result.data(), result.size(), text, arguments);
  result.pop_back();
  return result;
}

std::string printedTexts(const std::vector<std::string>& texts) {
  std::string result = "[";
  for (const std::string& text : texts) {
    result += (result.size() == 1 ? "" : ", ") + text;
  }
  return result + "]";
}

// Ignores an unknown servant and a destroyed POA.
void deactivate(PortableServer::POA_ptr poa, PortableServer::ServantBase* servant) {
  try {
    const PortableServer::ObjectId_var id = poa->servant_to_id(servant);
    poa->deactivate_object(id.in());
  } catch (const CORBA::Exception&) {
    return;
  }
}

// Removes a servant from the list of iterators. Returns false for an unknown servant.
bool forgetIterator(PortableServer::ServantBase* servant) {
  const std::lock_guard<std::mutex> lock(mutex);
  for (auto it = state.iterators.begin(); it != state.iterators.end(); ++it) {
    if (*it == servant) {
      state.iterators.erase(it);
      return true;
    }
  }
  return false;
}

PortableServer::POA_ptr iteratorPoa() {
  const std::lock_guard<std::mutex> lock(mutex);
  return PortableServer::POA::_duplicate(state.iteratorPoa.in());
}

void endIterator(PortableServer::ServantBase* servant) {
  if (forgetIterator(servant)) {
    const PortableServer::POA_var poa = iteratorPoa();
    if (!CORBA::is_nil(poa)) {
      deactivate(poa, servant);
    }
    servant->_remove_ref();
  }
}

std::vector<PortableServer::ServantBase*> takeIterators() {
  const std::lock_guard<std::mutex> lock(mutex);
  return std::exchange(state.iterators, {});
}

CORBA::Boolean nextTestSwitch() {
  if (answers.testSwitchAnswers.empty()) {
    return answers.testSwitch;
  }
  const bool answer = answers.testSwitchAnswers.front();
  answers.testSwitchAnswers.pop_front();
  return answer;
}

void sent(Notification notification) {
  const std::lock_guard<std::mutex> lock(mutex);
  state.notifications.push_back(std::move(notification));
}

}  // namespace

Agent& agent() {
  return answers;
}

NS_CORBA::MgrFactory* registeredFactory(const std::string& name) {
  const std::lock_guard<std::mutex> lock(mutex);
  const auto found = state.factories.find(name);
  return found != state.factories.end() ? found->second : nullptr;
}

std::vector<POA_common::Common_I*> registeredServants() {
  const std::lock_guard<std::mutex> lock(mutex);
  return state.servants;
}

void releaseServants() {
  std::vector<POA_common::Common_I*> servants;
  {
    const std::lock_guard<std::mutex> lock(mutex);
    servants.swap(state.servants);
  }
  for (POA_common::Common_I* servant : servants) {
    servant->_remove_ref();
  }
}

void useIteratorPoa(PortableServer::POA_ptr poa) {
  const std::lock_guard<std::mutex> lock(mutex);
  state.iteratorPoa = PortableServer::POA::_duplicate(poa);
}

std::vector<PortableServer::ServantBase_var> registeredIterators() {
  const std::lock_guard<std::mutex> lock(mutex);
  std::vector<PortableServer::ServantBase_var> result;
  for (PortableServer::ServantBase* servant : state.iterators) {
    servant->_add_ref();
    result.emplace_back(servant);
  }
  return result;
}

PortableServer::ServantBase* offeredIterator() {
  const std::lock_guard<std::mutex> lock(mutex);
  return state.offeredIterator;
}

void endIterators() {
  for (const PortableServer::ServantBase_var& servant : registeredIterators()) {
    endIterator(servant.in());
  }
}

std::vector<ReportedFailure> reportedFailures() {
  const std::lock_guard<std::mutex> lock(mutex);
  return state.failures;
}

std::vector<Notification> notificationsSent() {
  const std::lock_guard<std::mutex> lock(mutex);
  return state.notifications;
}

void resetAgent() {
  releaseServants();
  endIterators();
  for (PortableServer::ServantBase* servant : takeIterators()) {
    servant->_remove_ref();
  }
  const std::lock_guard<std::mutex> lock(mutex);
  state.factories.clear();
  state.iteratorPoa = PortableServer::POA::_nil();
  state.offeredIterator = nullptr;
  state.notifications.clear();
  state.failures.clear();
  answers.testSwitch = false;
  answers.testSwitchAnswers.clear();
  answers.emsName = "EMS-1";
  answers.attributeErrorText.clear();
  answers.storedAdditionalInfo.length(0);
  answers.returnStoredAdditionalInfo = false;
}

}  // namespace fakes

namespace NS_CORBA {

using fakes::called;
using fakes::calledSilently;
using fakes::quoted;

// --- Logging.

LogPosition* GetTss() {
  thread_local LogPosition position;
  calledSilently("GetTss");
  return &position;
}

void TaDebug(int level, const char* text) {
  called("TaDebug", std::to_string(level) + ", " + quoted(text), fakes::here());
}

void TaDebugWithPara(int level, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  const std::string text = fakes::format(format, arguments);
  va_end(arguments);
  called("TaDebugWithPara", std::to_string(level) + ", " + quoted(text), fakes::here());
}

void NbiException(ProcessException& exception) {
  {
    const std::lock_guard<std::mutex> lock(fakes::mutex);
    fakes::state.failures.push_back({exception.errorCode, exception.line, exception.file.str(),
                                     exception.function.str(), exception.context.str(),
                                     exception.detail.str()});
  }
  called("NbiException", std::to_string(exception.errorCode), fakes::here());
}

// --- Failures.

void ConstructException(CORBA::ULong code, globaldefs::ProcessingFailureException& exception) {
  called("ConstructException", std::to_string(code));
  exception.exceptionType = globaldefs::EXCPT_INTERNAL_ERROR;
  exception.errorReason = CORBA::string_dup(("constructed from " + std::to_string(code)).c_str());
}

void ThrowException(CORBA::ULong code) {
  called("ThrowException", std::to_string(code));
  if (code != 0) {
    throw globaldefs::ProcessingFailureException(globaldefs::EXCPT_UNABLE_TO_COMPLY,
                                                 ("thrown for " + std::to_string(code)).c_str());
  }
}

void ThrowException(CORBA::ULong code, const std::string& text) {
  called("ThrowException", std::to_string(code) + ", " + quoted(text));
  if (code != 0) {
    throw globaldefs::ProcessingFailureException(globaldefs::EXCPT_UNABLE_TO_COMPLY, text.c_str());
  }
}

// --- Configuration.

MgrFactory::~MgrFactory() {
  called("~MgrFactory", "");
}

CorbaBaseAgentConfig* CorbaBaseAgentConfig::Instance() {
  static CorbaBaseAgentConfig config;
  calledSilently("CorbaBaseAgentConfig::Instance");
  return &config;
}

void CorbaBaseAgentConfig::RegisterMgr(const char* name, MgrFactory* factory) {
  called("RegisterMgr", quoted(name) + (factory != nullptr ? "" : ", null"));
  const std::lock_guard<std::mutex> lock(fakes::mutex);
  if (!fakes::state.factories.emplace(name, factory).second) {
    throw ProcessException();
  }
}

void CorbaBaseAgentConfig::UnregisterMgr(const char* name) {
  called("UnregisterMgr", quoted(name));
  const std::lock_guard<std::mutex> lock(fakes::mutex);
  if (fakes::state.factories.erase(name) == 0) {
    throw ProcessException();
  }
}

std::string CorbaBaseAgentConfig::EmsName() {
  called("EmsName", "");
  return fakes::answers.emsName;
}

CorbaAgentConfig* CorbaAgentConfig::Instance() {
  static CorbaAgentConfig config;
  calledSilently("CorbaAgentConfig::Instance");
  return &config;
}

void CorbaAgentConfig::RegisterServant(const char* name, POA_common::Common_I* servant) {
  if (servant != nullptr) {
    const std::lock_guard<std::mutex> lock(fakes::mutex);
    fakes::state.servants.push_back(servant);
  }
  called("RegisterServant", quoted(name) + ", " + (servant != nullptr ? "servant" : "null"));
  if (servant == nullptr) {
    throw ProcessException();
  }
}

bool CorbaAgentConfig::GetTestSwitch() {
  called("GetTestSwitch", "");
  return fakes::nextTestSwitch();
}

// --- Iterators.

PortableServer::POA_ptr TAIteratorHelper::getIteratorPoa() {
  called("getIteratorPoa", "");
  return fakes::iteratorPoa();
}

CORBA::ULong TAIteratorHelper::add_Iterator(PortableServer::ServantBase* servant) {
  {
    const std::lock_guard<std::mutex> lock(fakes::mutex);
    fakes::state.offeredIterator = servant;
  }
  const CORBA::ULong code = called("add_Iterator", "");
  if (code != 0) {
    return code;
  }
  {
    const std::lock_guard<std::mutex> lock(fakes::mutex);
    fakes::state.iterators.push_back(servant);
  }
  return calledSilently("add_Iterator late");
}

void TAIteratorHelper::deactive_object(PortableServer::ServantBase* servant) {
  called("deactive_object", "");
  fakes::endIterator(servant);
}

// --- Common attributes.

CORBA::ULong TECommonFunc::onSetUserLabel(const globaldefs::NVSList_T& objectName,
                                          const char* userLabel, bool enforceUniqueness) {
  return called("onSetUserLabel", fakes::printed(objectName) + ", " + quoted(userLabel) + ", " +
                                      fakes::printed(enforceUniqueness));
}

CORBA::ULong TECommonFunc::onSetOwner(const globaldefs::NVSList_T& objectName, const char* owner) {
  return called("onSetOwner", fakes::printed(objectName) + ", " + quoted(owner));
}

CORBA::ULong TECommonFunc::onSetNativeEMSName(const globaldefs::NVSList_T& objectName,
                                              const char* nativeEMSName) {
  return called("onSetNativeEMSName", fakes::printed(objectName) + ", " + quoted(nativeEMSName));
}

CORBA::ULong TECommonFunc::onSetAdditionalInfo(const globaldefs::NVSList_T& objectName,
                                               globaldefs::NVSList_T& additionalInfo,
                                               std::string& errorText) {
  const CORBA::ULong code = called("onSetAdditionalInfo", fakes::printed(objectName) + ", " +
                                                              fakes::printed(additionalInfo) +
                                                              ", " + fakes::quoted(errorText));
  if (fakes::answers.returnStoredAdditionalInfo) {
    additionalInfo = fakes::answers.storedAdditionalInfo;
  }
  errorText = fakes::answers.attributeErrorText;
  return code;
}

CORBA::ULong TECommonFunc::resetObject(const globaldefs::NVSList_T& objectName) {
  return called("resetObject", fakes::printed(objectName));
}

void TECommonFunc::onGetCapabilities(common::CapabilityList_T_out capabilities,
                                     const std::vector<std::string>& attributeOperations,
                                     const std::vector<std::string>& otherOperations) {
  called("onGetCapabilities",
         fakes::printedTexts(attributeOperations) + ", " + fakes::printedTexts(otherOperations));
  common::CapabilityList_T_var list = new common::CapabilityList_T;
  for (const auto* operations : {&attributeOperations, &otherOperations}) {
    for (const std::string& operation : *operations) {
      const CORBA::ULong last = list->length();
      list->length(last + 1);
      list[last].name = CORBA::string_dup(operation.c_str());
      list[last].value = CORBA::string_dup("supported");
    }
  }
  capabilities = list._retn();
}

// --- Notifications.

void TANotification::OnObjectCreated(const globaldefs::NVSList_T& objectName,
                                     const CORBA::Any& object, bool edgePointRelated) {
  called("OnObjectCreated", fakes::printed(objectName) + ", " + fakes::printed(edgePointRelated));
  fakes::Notification notification;
  notification.kind = "created";
  notification.objectName = objectName;
  notification.object = object;
  notification.edgePointRelated = edgePointRelated;
  fakes::sent(std::move(notification));
}

void TANotification::OnObjectDeleted(const globaldefs::NVSList_T& objectName,
                                     bool edgePointRelated) {
  called("OnObjectDeleted", fakes::printed(objectName) + ", " + fakes::printed(edgePointRelated));
  fakes::Notification notification;
  notification.kind = "deleted";
  notification.objectName = objectName;
  notification.edgePointRelated = edgePointRelated;
  fakes::sent(std::move(notification));
}

void TANotification::OnObjectAVC(const globaldefs::NVSList_T& objectName,
                                 const notifications::NVList_T& attributes, bool edgePointRelated,
                                 const CORBA::Any& additional, bool hasAdditional) {
  called("OnObjectAVC", fakes::printed(objectName) + ", " + fakes::printed(edgePointRelated) +
                            ", " + fakes::printed(hasAdditional));
  fakes::Notification notification;
  notification.kind = "changed";
  notification.objectName = objectName;
  notification.attributes = attributes;
  notification.edgePointRelated = edgePointRelated;
  notification.additional = additional;
  notification.hasAdditional = hasAdditional;
  fakes::sent(std::move(notification));
}

}  // namespace NS_CORBA
