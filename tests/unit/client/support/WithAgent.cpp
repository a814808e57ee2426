#include "tests/unit/client/support/WithAgent.h"

#include <sstream>

#include "client/App.h"
#include "client/agent/CallFailure.h"

namespace topoctl {

std::unique_ptr<orb::Server> WithAgent::server_;

void PrintTo(const CommandFailure& failure, std::ostream* out) {
  *out << "exit code " << failure.exitCode << ", " << testing::PrintToString(failure.line);
}

void WithAgent::startServer(const orb::Options& options) {
  server_ = orb::startServer(options, {"127.0.0.1", 0}, [](const std::string&) {});
  const PortableServer::POAManager_var manager = server_->rootPoa()->the_POAManager();
  manager->activate();
}

void WithAgent::TearDownTestSuite() {
  server_.reset();
}

void WithAgent::SetUp() {
  manager_ = new FakeManager(script, server_->rootPoa());
  published_ = server_->wellKnownObject("TopoManagement");
  const CORBA::Object_var reference = published_->publish(manager_.in());
}

void WithAgent::TearDown() {
  published_->retire();
}

std::string WithAgent::address() {
  return "127.0.0.1:" + std::to_string(server_->endpoint().port);
}

std::string WithAgent::agentReference() {
  return "corbaloc::" + address() + "/TopoManagement";
}

Options WithAgent::options(const std::string& command, std::uint32_t howMany) const {
  Options options;
  options.access.reference = agentReference();
  options.access.howMany = howMany;
  options.format = Format::kJson;
  options.command = command;
  return options;
}

std::string WithAgent::output(const Options& options) const {
  std::ostringstream out;
  std::ostringstream err;
  execute(options, server_->get(), {out, err, false}, retry);
  EXPECT_EQ(err.str(), "");
  return out.str();
}

CommandFailure WithAgent::failureOf(const Options& options) const {
  std::ostringstream out;
  std::ostringstream err;
  try {
    execute(options, server_->get(), {out, err, false}, retry);
    ADD_FAILURE() << "the command succeeded";
    return {0, ""};
  } catch (...) {
    EXPECT_EQ(out.str(), "");
    const int code = report(currentFailure(options.access), err);
    return {code, err.str()};
  }
}

}  // namespace topoctl
