#include <string>
#include <thread>

#include "conformance/probe/Calls.h"
#include "conformance/probe/Rules.h"
#include "platform/agent/Logging.h"

namespace conformance::probe {

using namespace NS_CORBA;

void everyThreadHasAPosition() {
  LogPosition* const position = quietly("GetTss", [] { return GetTss(); });
  require(position != nullptr, "GetTss returns null");
  position->file = "topo-conformance";
  position->line = 1;
  LogPosition* other = nullptr;
  std::thread([&other] { other = GetTss(); }).join();
  require(other != nullptr, "GetTss returns null on another thread");
  require(other != position, "GetTss returns the position of another thread");
  require(GetTss() == position, "GetTss returns another position on the same thread");
  require(position->file == "topo-conformance" && position->line == 1,
          "another thread has changed the position");
}

void logCallsReturn() {
  const std::string longText(10000, 'x');
  for (const int level : {kLogError, kLogTrace}) {
    quietly("TaDebug", [&] { TaDebug(level, "topo-conformance checks the log: München %s %n"); });
    quietly("TaDebug", [&] { TaDebug(level, longText.c_str()); });
    quietly("TaDebugWithPara", [&] {
      TaDebugWithPara(level, "topo-conformance checks the log: %d%% %s", 100, longText.c_str());
    });
  }
  ProcessException failure;
  failure.errorCode = 5;
  failure.detail << "topo-conformance checks NbiException";
  quietly("NbiException", [&] { NbiException(failure); });
}

}  // namespace conformance::probe
