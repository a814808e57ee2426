#include "tests/fakes/Journal.h"

#include <algorithm>
#include <map>
#include <mutex>
#include <new>
#include <stdexcept>
#include <utility>

#include "platform/framework/ProcessException.h"

namespace fakes {
namespace {

struct Line {
  std::string function;
  std::string text;
};

struct Plan {
  int calls = 0;
  std::map<int, Step> steps;  // number of the call -> step
  Step everyCall;
};

std::mutex mutex;
std::vector<Line>& journal = *new std::vector<Line>;                    // guarded by mutex
std::map<std::string, Plan>& plans = *new std::map<std::string, Plan>;  // guarded by mutex

// REQUIRES: mutex is locked.
Step nextStep(const std::string& function) {
  Plan& plan = plans[function];
  const auto planned = plan.steps.find(++plan.calls);
  return planned != plan.steps.end() ? planned->second : plan.everyCall;
}

CORBA::ULong take(const Step& step) {
  return step ? step() : 0;
}

}  // namespace

std::vector<std::string> Journal::lines() {
  const std::lock_guard<std::mutex> lock(mutex);
  std::vector<std::string> result;
  for (const Line& line : journal) {
    result.push_back(line.text);
  }
  return result;
}

std::vector<std::string> Journal::linesOf(std::initializer_list<std::string> functions) {
  const std::lock_guard<std::mutex> lock(mutex);
  std::vector<std::string> result;
  for (const Line& line : journal) {
    if (std::find(functions.begin(), functions.end(), line.function) != functions.end()) {
      result.push_back(line.text);
    }
  }
  return result;
}

int Journal::count(const std::string& function) {
  return static_cast<int>(linesOf({function}).size());
}

void Journal::clear() {
  const std::lock_guard<std::mutex> lock(mutex);
  journal.clear();
}

void onCall(const std::string& function, int nth, Step step) {
  const std::lock_guard<std::mutex> lock(mutex);
  plans[function].steps[nth] = std::move(step);
}

void onEveryCall(const std::string& function, Step step) {
  const std::lock_guard<std::mutex> lock(mutex);
  plans[function].everyCall = std::move(step);
}

Step raiseProcessException(std::int32_t code) {
  return [code]() -> CORBA::ULong {
    ProcessException failure;
    failure.errorCode = code;
    throw failure;
  };
}

Step raiseInterfaceNotExist() {
  return []() -> CORBA::ULong { throw InterfaceNotExistException(); };
}

Step raiseRuntimeError(const std::string& text) {
  return [text]() -> CORBA::ULong { throw std::runtime_error(text); };
}

Step raiseBadAlloc() {
  return []() -> CORBA::ULong { throw std::bad_alloc(); };
}

Step raiseTransient() {
  return []() -> CORBA::ULong { throw CORBA::TRANSIENT(0, CORBA::COMPLETED_NO); };
}

Step giveCode(CORBA::ULong code) {
  return [code] { return code; };
}

CORBA::ULong called(const std::string& function, const std::string& arguments,
                    const std::string& suffix) {
  Step step;
  {
    const std::lock_guard<std::mutex> lock(mutex);
    journal.push_back({function, function + "(" + arguments + ")" + suffix});
    step = nextStep(function);
  }
  return take(step);
}

CORBA::ULong calledSilently(const std::string& function) {
  Step step;
  {
    const std::lock_guard<std::mutex> lock(mutex);
    step = nextStep(function);
  }
  return take(step);
}

std::string quoted(const std::string& text) {
  return "\"" + text + "\"";
}

std::string quoted(const char* text) {
  return text != nullptr ? quoted(std::string(text)) : "null";
}

std::string printed(bool value) {
  return value ? "true" : "false";
}

std::string printed(const globaldefs::NVSList_T& pairs) {
  std::string text = "[";
  for (CORBA::ULong i = 0; i < pairs.length(); ++i) {
    text += (i == 0 ? "" : ", ") + std::string(pairs[i].name.in()) + "=" + pairs[i].value.in();
  }
  return text + "]";
}

void resetJournal() {
  const std::lock_guard<std::mutex> lock(mutex);
  journal.clear();
  plans.clear();
}

}  // namespace fakes
