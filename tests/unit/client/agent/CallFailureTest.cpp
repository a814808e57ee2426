#include "client/agent/CallFailure.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <fstream>
#include <sstream>

#include "client/App.h"
#include "client/agent/Connection.h"
#include "idl/PermissionMinors.h"
#include "tests/support/FakeNaming.h"
#include "tests/unit/client/support/WithAgent.h"

namespace topoctl {
namespace {

using globaldefs::ExceptionType_T;

testing::Matcher<CommandFailure> exitWithPrefix(int exitCode, const std::string& prefix) {
  return testing::AllOf(testing::Field(&CommandFailure::exitCode, exitCode),
                        testing::Field(&CommandFailure::line, testing::StartsWith(prefix)));
}

class CallFailures : public WithAgent {
 protected:
  CommandFailure failureAt(const std::string& reference) const {
    Options at = options("topo");
    at.access.reference = reference;
    return failureOf(at);
  }

  CommandFailure refusal(ExceptionType_T type, const std::string& reason) {
    script.onView = [=] { throw globaldefs::ProcessingFailureException(type, reason.c_str()); };
    return failureOf(options("topo"));
  }
};

// ---- exceptions of the agent

TEST_F(CallFailures, NameTheExceptionTypeAndTheReason) {
  EXPECT_EQ(refusal(globaldefs::EXCPT_NOT_IMPLEMENTED, "later"),
            exitWith(3, "topoctl: the agent refused: EXCPT_NOT_IMPLEMENTED: later\n"));
  EXPECT_EQ(refusal(globaldefs::EXCPT_INVALID_INPUT, "no such subnetwork"),
            exitWith(3, "topoctl: the agent refused: EXCPT_INVALID_INPUT: no such subnetwork\n"));
  EXPECT_EQ(refusal(globaldefs::EXCPT_ENTITY_NOT_FOUND, "x"),
            exitWith(3, "topoctl: the agent refused: EXCPT_ENTITY_NOT_FOUND: x\n"));
  EXPECT_EQ(refusal(globaldefs::EXCPT_USERLABEL_IN_USE, "y"),
            exitWith(3, "topoctl: the agent refused: EXCPT_USERLABEL_IN_USE: y\n"));
}

TEST_F(CallFailures, NameTheExceptionTypeWithoutAReason) {
  EXPECT_EQ(refusal(globaldefs::EXCPT_ACCESS_DENIED, ""),
            exitWith(3, "topoctl: the agent refused: EXCPT_ACCESS_DENIED\n"));
}

TEST_F(CallFailures, NameTheReasonForWhichAClientHasNoPermission) {
  const std::pair<unsigned long, std::string> reasons[] = {
      {permission_minor::kNoRole,
       "this client does not have the role of the operation (--access of the agent)"},
      {permission_minor::kReadOnly, "the agent is read-only (--read-only of the agent)"},
      {permission_minor::kOtherEndpoint,
       "the console and the session have another endpoint (--console-endpoint of the agent)"},
      {permission_minor::kPushAddress,
       "the agent does not push to the address of this consumer (--push-to of the agent)"},
      {0, "no permission"}};
  for (const auto& [minor, reason] : reasons) {
    script.onView = [code = static_cast<CORBA::ULong>(minor)] {
      throw CORBA::NO_PERMISSION(code, CORBA::COMPLETED_NO);
    };
    EXPECT_EQ(failureOf(options("topo")),
              exitWith(3, "topoctl: the agent refused: " + reason + "\n"));
  }
}

TEST_F(CallFailures, EscapeControlCharactersInTheReason) {
  EXPECT_EQ(
      refusal(globaldefs::EXCPT_INTERNAL_ERROR, "two\nlines \x1b[31m \xff"),
      exitWith(3,
               "topoctl: the agent refused: EXCPT_INTERNAL_ERROR: two\\nlines \\x1b[31m \ufffd\n"));
}

TEST_F(CallFailures, NameAnyOtherSystemException) {
  script.onView = [] { throw CORBA::NO_RESOURCES(); };
  EXPECT_EQ(failureOf(options("topo")),
            exitWith(4, "topoctl: a call to the agent at '" + agentReference() +
                            "' failed: NO_RESOURCES\n"));
}

TEST_F(CallFailures, NameAnObjectThatDoesNotExist) {
  const std::string reference = "corbaloc::" + address() + "/SomethingElse";
  EXPECT_EQ(failureAt(reference), exitWith(2, "topoctl: the agent at '" + reference +
                                                  "' answers, but has no object of this name\n"));
}

TEST_F(CallFailures, NameAnObjectOfAnotherType) {
  const auto other = server().wellKnownObject("Other");
  const PortableServer::Servant_var<support::FakeNaming> naming = new support::FakeNaming;
  const CORBA::Object_var reference = other->publish(naming.in());
  EXPECT_EQ(failureAt("corbaloc::" + address() + "/Other"),
            exitWith(4, "topoctl: the object of the reference 'corbaloc::" + address() +
                            "/Other' is not a TopoMgr_I\n"));
  other->retire();
}

TEST_F(CallFailures, DistinguishAMissingAnswerFromARejectedRequest) {
  const std::string agent = "topoctl: the agent at '" + agentReference() + "' ";
  script.onView = [] { throw CORBA::TIMEOUT(); };
  EXPECT_EQ(failureOf(options("topo")),
            exitWith(2, agent + "did not answer within 30 seconds; raise --timeout\n"));
  Options hasty = options("topo");
  hasty.access.callTimeout = std::chrono::milliseconds(250);
  EXPECT_EQ(failureOf(hasty),
            exitWith(2, agent + "did not answer within 0.25 seconds; raise --timeout\n"));
  script.onView = [] { throw CORBA::TRANSIENT(CORBA::OMGVMCID | 1, CORBA::COMPLETED_NO); };
  EXPECT_EQ(
      failureOf(options("topo")),
      exitWith(2, agent + "answers, but does not serve the request now: it reloads its module, "
                          "starts or stops\n"));
}

// ---- references

TEST_F(CallFailures, NameTheEnvironmentAsTheSourceOfTheReference) {
  Options at = options("topo");
  at.access.reference = "nonsense";
  at.access.isFromEnvironment = true;
  EXPECT_EQ(failureOf(at),
            exitWith(1,
                     "topoctl: the reference 'nonsense' of $TOPO_AGENT is malformed: it starts "
                     "with none of IOR:, corbaloc:, corbaname:\n"));
  at.access.reference = "corbaloc::" + address() + "/SomethingElse";
  EXPECT_EQ(failureOf(at), exitWith(2, "topoctl: the agent at '" + at.access.reference +
                                           "' ($TOPO_AGENT) answers, but has no object of this "
                                           "name\n"));
}

TEST_F(CallFailures, ExplainAPortOutOfRange) {
  EXPECT_EQ(failureAt("corbaloc::127.0.0.1:99999/X"),
            exitWith(1,
                     "topoctl: the reference 'corbaloc::127.0.0.1:99999/X' is malformed: the port "
                     "'99999' is not a number from 1 to 65535\n"));
}

TEST_F(CallFailures, ExplainAMalformedReference) {
  EXPECT_EQ(
      failureAt(""),
      exitWith(1,
               "topoctl: the reference '' is malformed: it starts with none of IOR:, corbaloc:, "
               "corbaname:\n"));
  EXPECT_EQ(
      failureAt("127.0.0.1:2810"),
      exitWith(
          1,
          "topoctl: the reference '127.0.0.1:2810' is malformed: it starts with none of IOR:, "
          "corbaloc:, corbaname:; write corbaloc::127.0.0.1:2810/KEY for the object KEY at this "
          "address\n"));
  EXPECT_EQ(
      failureAt("127.0.0.1:99999"),
      exitWith(1,
               "topoctl: the reference '127.0.0.1:99999' is malformed: the port '99999' is not "
               "a number from 1 to 65535\n"));
  EXPECT_EQ(
      failureAt("corbaloc::h:1/a b"),
      exitWith(
          1,
          "topoctl: the reference 'corbaloc::h:1/a b' is malformed: it contains white space or "
          "control characters\n"));
  EXPECT_EQ(failureAt("corbaname::h:1"),
            exitWith(1, "topoctl: the reference 'corbaname::h:1' is malformed: it has no #NAME\n"));
  EXPECT_EQ(
      failureAt("corbaname::h:1#"),
      exitWith(1, "topoctl: the reference 'corbaname::h:1#' is malformed: it has no #NAME\n"));
  EXPECT_EQ(
      failureAt("corbaname::h:1#a%00"),
      exitWith(1,
               "topoctl: the reference 'corbaname::h:1#a%00' is malformed: '%00' stands for no "
               "character\n"));
}

TEST_F(CallFailures, ExplainAReferenceThatTheOrbRejects) {
  for (const std::string reference :
       {"IOR:", "IOR:zz", "IOR:00", "corbaloc:", "corbaloc:nonsense", "corbaloc::h:port/X"}) {
    const std::string expected = "topoctl: the reference '" + reference + "' is malformed: ";
    EXPECT_THAT(failureAt(reference), exitWithPrefix(1, expected));
  }
}

TEST_F(CallFailures, ExplainANilReference) {
  EXPECT_EQ(
      failureAt("IOR:00000000000000010000000000000000"),
      exitWith(1,
               "topoctl: the reference 'IOR:00000000000000010000000000000000' is malformed: it is "
               "nil\n"));
}

TEST_F(CallFailures, ShortenALongReference) {
  const std::string reference = "IOR:" + std::string(1000, 'z');
  const std::string expected = "topoctl: the reference '" + reference.substr(0, 100) + "...' is ";
  EXPECT_THAT(failureAt(reference), exitWithPrefix(1, expected));
}

// ---- IOR files

class IorFiles : public CallFailures {
 protected:
  // Creates a file with this content and returns options that name the file.
  Options withFile(const std::string& content) const {
    std::ofstream(path_, std::ios::binary) << content;
    return withPath(path_);
  }

  Options withPath(const std::string& path) const {
    Options result = options("topo");
    result.access.iorFile = path;
    return result;
  }

  ~IorFiles() override { unlink(path_.c_str()); }

  const std::string path_ = testing::TempDir() + "topoctl_ior." + std::to_string(getpid());
};

TEST_F(IorFiles, MayContainAnyFormOfReference) {
  const CORBA::Object_var object = server().get()->string_to_object(agentReference().c_str());
  const CORBA::String_var ior = server().get()->object_to_string(object);
  EXPECT_EQ(output(withFile(ior.in())), "[]\n");
  EXPECT_EQ(output(withFile(std::string(ior.in()) + "\n")), "[]\n");
  EXPECT_EQ(output(withFile("  " + agentReference() + "\r\n")), "[]\n");
}

TEST_F(IorFiles, AreNamedWhenUnreadable) {
  EXPECT_EQ(
      failureOf(withPath("/no/such/file")),
      exitWith(
          1, "topoctl: the IOR file '/no/such/file' cannot be read: No such file or directory\n"));
  EXPECT_EQ(failureOf(withPath("")),
            exitWith(1, "topoctl: the IOR file '' cannot be read: No such file or directory\n"));
  EXPECT_EQ(failureOf(withPath("/")),
            exitWith(1, "topoctl: the IOR file '/' cannot be read: Is a directory\n"));
}

TEST_F(IorFiles, AreNamedWhenEmpty) {
  EXPECT_EQ(failureOf(withFile("")),
            exitWith(1, "topoctl: the IOR file '" + path_ + "' is empty\n"));
  EXPECT_EQ(failureOf(withFile(" \n\n")),
            exitWith(1, "topoctl: the IOR file '" + path_ + "' is empty\n"));
}

TEST_F(IorFiles, AreNamedWhenTheContentIsNoReference) {
  const std::string holdsNone = "topoctl: the IOR file '" + path_ + "' holds no object reference: ";
  EXPECT_EQ(failureOf(withFile("hello\n")),
            exitWith(1, holdsNone + "it starts with none of IOR:, corbaloc:, corbaname:\n"));
  EXPECT_EQ(failureOf(withFile("IOR:00\nIOR:00\n")),
            exitWith(1, holdsNone + "it contains white space or control characters\n"));
  EXPECT_EQ(failureOf(withFile(std::string("IOR:\0", 5))),
            exitWith(1, holdsNone + "it contains white space or control characters\n"));
  EXPECT_THAT(failureOf(withFile("IOR:garbage")), exitWithPrefix(1, holdsNone));
  EXPECT_EQ(failureOf(withPath("/dev/zero")),
            exitWith(1, "topoctl: the IOR file '/dev/zero' is too long for an object reference\n"));
}

TEST_F(IorFiles, AreNamedWhenTheirAgentFails) {
  script.onView = [] { throw CORBA::COMM_FAILURE(); };
  EXPECT_EQ(failureOf(withFile(agentReference())),
            exitWith(2, "topoctl: the agent of the IOR file '" + path_ +
                            "' closed the connection before it answered, and may have executed the "
                            "request\n"));
}

// ---- names

class CorbaNames : public CallFailures {
 protected:
  void SetUp() override {
    CallFailures::SetUp();
    naming_ = new support::FakeNaming;
    CORBA::ORB_ptr orb = server().get();
    naming_->bound["TopoManagement"] = orb->string_to_object(agentReference().c_str());
    naming_->bound["a/b c.kind"] = orb->string_to_object(agentReference().c_str());
    naming_->bound["50%"] = orb->string_to_object(agentReference().c_str());
    naming_->bound["nil"] = CORBA::Object::_nil();
    service_ = server().wellKnownObject("NameService");
    const CORBA::Object_var reference = service_->publish(naming_.in());
  }

  void TearDown() override {
    service_->retire();
    CallFailures::TearDown();
  }

  static std::string reference(const std::string& rest) {
    std::string reference = "corbaname::";
    return reference.append(address()).append(rest);
  }

  std::string outputAt(const std::string& reference) const {
    Options at = options("topo");
    at.access.reference = reference;
    return output(at);
  }

 private:
  PortableServer::Servant_var<support::FakeNaming> naming_;
  std::unique_ptr<orb::WellKnownObject> service_;
};

TEST_F(CorbaNames, AreResolved) {
  EXPECT_EQ(outputAt(reference("#TopoManagement")), "[]\n");
  EXPECT_EQ(outputAt(reference("/NameService#TopoManagement")), "[]\n");
  EXPECT_EQ(outputAt("CorbaName::" + address() + "#TopoManagement"), "[]\n");
  EXPECT_EQ(outputAt(reference("#a/b%20c%2Ekind")), "[]\n");
  EXPECT_EQ(outputAt(reference("#50%")), "[]\n");
}

TEST_F(CorbaNames, AreReportedWhenNotBound) {
  EXPECT_EQ(failureAt(reference("#Nothing")),
            exitWith(2, "topoctl: the naming service of '" + reference("#Nothing") +
                            "' has no object of the name 'Nothing'\n"));
  EXPECT_EQ(failureAt(reference("#nil")),
            exitWith(2, "topoctl: the naming service of '" + reference("#nil") +
                            "' has no object of the name 'nil'\n"));
}

TEST_F(CorbaNames, AreMalformedWhenTheNamingServiceRejectsThem) {
  EXPECT_EQ(failureAt(reference("#a..b")),
            exitWith(1, "topoctl: the reference '" + reference("#a..b") +
                            "' is malformed: 'a..b' is not a name\n"));
}

TEST_F(CorbaNames, NeedAReachableNamingService) {
  EXPECT_EQ(failureAt(reference("/TopoManagement#x")),
            exitWith(4, "topoctl: the naming service of '" + reference("/TopoManagement#x") +
                            "' is not a NamingContextExt\n"));
}

// ---- this process

TEST(LocalFailures, OfTheOutputEndWith5) {
  std::ostringstream out;
  out.setstate(std::ios::badbit);
  std::ostringstream err;
  EXPECT_EQ(run({"--version"}, "", {out, err, false}), 5);
  EXPECT_EQ(err.str(), "topoctl: the output cannot be written\n");
}

template <typename Thrown>
CommandFailure translated(const Thrown& thrown) {
  try {
    throw thrown;
  } catch (...) {
    const Failure failure = currentFailure(AgentAccess());
    return {static_cast<int>(failure.code()), failure.what()};
  }
}

TEST(LocalFailures, OfAnyExceptionTypeAreTranslated) {
  EXPECT_EQ(translated(std::bad_alloc()), exitWith(5, "out of memory"));
  EXPECT_EQ(translated(std::runtime_error("something")), exitWith(5, "something"));
  EXPECT_EQ(translated(42), exitWith(5, "an unknown failure"));
  EXPECT_EQ(translated(CosNaming::NamingContext::AlreadyBound()),
            exitWith(4,
                     "a call to the agent at 'corbaloc::127.0.0.1:2810/TopoManagement' failed: "
                     "AlreadyBound"));
}

}  // namespace
}  // namespace topoctl
