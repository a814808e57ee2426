// The reasons of a failed load. The load of the real module is tested with topo-agentd.

#include "agent/bundle/ModuleLoader.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/support/EnvironmentVariable.h"
#include "tests/support/IgnoredLeaks.h"

namespace {

// The text of the error without the name of the file; empty after a load.
std::string reasonAgainst(const std::string& file) {
  agent::ModuleLoader loader(file);
  try {
    const support::IgnoredLeaks parser;
    loader.load();
    return "";
  } catch (const agent::ModuleError& failure) {
    const std::string text = failure.what();
    const std::string prefix = "module " + file + ": ";
    EXPECT_EQ(prefix, text.substr(0, prefix.size()));
    return text.substr(prefix.size());
  }
}

TEST(ModuleLoader, ReportsTheResultOfAFailedInit) {
  EXPECT_EQ("its init returned -1", reasonAgainst(TOPO_REFUSING_MODULE));
}

TEST(ModuleLoader, ReportsCodeAndTextOfAFailedInit) {
  const support::EnvironmentVariable exception("TOPO_INIT_EXCEPTION", "ProcessException");
  EXPECT_EQ("its init failed with code 77: no network", reasonAgainst(TOPO_REFUSING_MODULE));
}

TEST(ModuleLoader, ReportsTheExceptionOfAFailedInit) {
  const support::EnvironmentVariable exception("TOPO_INIT_EXCEPTION", "no license");
  EXPECT_EQ("its init failed: no license", reasonAgainst(TOPO_REFUSING_MODULE));
}

TEST(ModuleLoader, ReportsAFileThatIsNoModuleWithoutItsInit) {
  EXPECT_EQ("it has no _make_zu_corba_topo", reasonAgainst(TOPO_IDL));
}

}  // namespace
