// Parses command lines for the tests of the syntax.

#ifndef TESTS_UNIT_CLIENT_COMMANDLINE_PARSELINE_H
#define TESTS_UNIT_CLIENT_COMMANDLINE_PARSELINE_H

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "client/base/Failure.h"
#include "client/commandline/Options.h"

namespace topoctl {

inline Arguments parsed(const std::vector<std::string>& words) {
  return parseOptions(words, "").arguments;
}

// The text of a usage error, without the usage itself.
inline std::string usageErrorOf(const std::vector<std::string>& words) {
  try {
    parseOptions(words, "");
    return "no error";
  } catch (const Failure& failure) {
    EXPECT_EQ(failure.code(), ExitCode::kUsage);
    const std::string text = failure.what();
    return text.substr(0, text.find("; usage: "));
  }
}

}  // namespace topoctl

#endif
