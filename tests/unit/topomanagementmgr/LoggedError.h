// Reads the logged errors.

#ifndef TESTS_UNIT_TOPOMANAGEMENTMGR_LOGGEDERROR_H
#define TESTS_UNIT_TOPOMANAGEMENTMGR_LOGGEDERROR_H

#include <string>
#include <vector>

#include "tests/fakes/Journal.h"

// The log record of level 1 without its line number, which is not fixed. Returns "N errors" when
// there is not exactly one record.
inline std::string loggedErrorWithoutLine() {
  std::vector<std::string> errors;
  for (const std::string& line : fakes::Journal::linesOf({"TaDebug", "TaDebugWithPara"})) {
    if (line.find("(1, ") != std::string::npos) {
      errors.push_back(line);
    }
  }
  if (errors.size() != 1) {
    return std::to_string(errors.size()) + " errors";
  }
  const std::size_t colon = errors[0].rfind(':');
  return errors[0].substr(0, colon) + errors[0].substr(errors[0].find(' ', colon));
}

// The log record of an operation that has caught a ProcessException of the domain.
inline std::string caughtBy(const std::string& operation, const std::string& code) {
  return "TaDebugWithPara(1, \"[TopoManagementMgr::" + operation +
         "]: catch processException! errorCode = " + code + "\") at topomanagementmgr unknown";
}

#endif
