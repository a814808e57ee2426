#include "client/agent/Connection.h"

#include <algorithm>
#include <cctype>
#include <sstream>
#include <system_error>

#include "client/base/Failure.h"
#include "client/base/File.h"
#include "idl/ObjectKeys.h"
#include "orb/reachability.h"
#include "orb/resolve.h"

namespace topoctl {
namespace {

// A reference with many addresses has a few thousand bytes.
constexpr std::size_t kMaxIorFileBytes = std::size_t{1024} * 1024;

constexpr std::size_t kMaxShownReference = 100;  // characters

// An IOR has up to thousands of characters and is not readable.
std::string shorten(const std::string& reference) {
  return reference.size() <= kMaxShownReference ? reference
                                                : reference.substr(0, kMaxShownReference) + "...";
}

// The origin of the reference, for messages.
std::string describeSource(const AgentAccess& access) {
  if (access.iorFile) {
    return "the IOR file '" + *access.iorFile + "'";
  }
  return "the reference '" + shorten(access.reference) + "'" +
         (access.isFromEnvironment ? " of $TOPO_AGENT" : "");
}

[[noreturn]] void badSource(const AgentAccess& access, const std::string& reason) {
  throw Failure(ExitCode::kUsage, describeSource(access) + " " + reason);
}

[[noreturn]] void malformed(const AgentAccess& access, const std::string& reason) {
  badSource(access, (access.iorFile ? "holds no object reference: " : "is malformed: ") + reason);
}

bool isSpace(char c) {
  return std::isspace(static_cast<unsigned char>(c)) != 0;
}

std::string trim(const std::string& text) {
  const auto first = std::find_if_not(text.begin(), text.end(), isSpace);
  const auto last = std::find_if_not(text.rbegin(), text.rend(), isSpace).base();
  return first < last ? std::string(first, last) : "";
}

std::string readIorFile(const AgentAccess& access) {
  try {
    const std::string content = readFile(*access.iorFile, kMaxIorFileBytes);
    if (content.size() > kMaxIorFileBytes) {
      badSource(access, "is too long for an object reference");
    }
    std::string reference = trim(content);
    if (reference.empty()) {
      badSource(access, "is empty");
    }
    return reference;
  } catch (const std::system_error& error) {
    badSource(access, "cannot be read: " + error.code().message());
  }
}

// Rejects white space: it comes from a wrong file or a missing quote, although the NAME of a
// corbaname could contain spaces.
void checkCharacters(const AgentAccess& access, const std::string& reference) {
  if (std::any_of(reference.begin(), reference.end(),
                  [](char c) { return static_cast<unsigned char>(c) <= ' '; })) {
    malformed(access, "it contains white space or control characters");
  }
}

// Why no connection to the object can be made, as a clause.
std::string reasonOf(CORBA::Object_ptr object, const AgentAccess& access) {
  const std::string address = orb::addressOf(object);
  const std::string reason =
      address.empty() ? "" : orb::whyNotConnected(address, access.callTimeout);
  return reason.empty() ? "no connection" : reason;
}

// ---- naming services

[[noreturn]] void namingFailed(const AgentAccess& access, ExitCode code,
                               const std::string& reason) {
  throw Failure(code, "the naming service of '" + shorten(access.reference) + "' " + reason);
}

[[noreturn]] void namingFailed(const AgentAccess& access, const orb::NamingServiceError& failure) {
  const bool notBound = failure.cause() == orb::NamingServiceError::Cause::kNotBound;
  namingFailed(access, notBound ? ExitCode::kUnreachable : ExitCode::kCallFailed, failure.what());
}

[[noreturn]] void namingFailed(CORBA::ORB_ptr orb, const AgentAccess& access,
                               const std::string& reference,
                               const CORBA::SystemException& failure) {
  if (orb::isNotConnected(failure)) {
    const CORBA::Object_var service = orb::namingServiceOf(orb, reference, access.callTimeout);
    namingFailed(access, ExitCode::kUnreachable, "cannot be reached: " + reasonOf(service, access));
  }
  if (orb::isTimeout(failure)) {
    namingFailed(access, ExitCode::kUnreachable, "did not answer " + describeTimeout(access));
  }
  if (CORBA::OBJECT_NOT_EXIST::_downcast(&failure) != nullptr) {
    namingFailed(access, ExitCode::kUnreachable,
                 "does not exist: the server at its address answers, but has no such object");
  }
  namingFailed(access, orb::isUnreachable(failure) ? ExitCode::kUnreachable : ExitCode::kCallFailed,
               "failed: " + orb::describe(failure));
}

// The agent's manager at "unix:PATH", "tcp:HOST:PORT" or "tls:HOST:PORT"; other texts as they are.
std::string expandEndpoint(const std::string& text) {
  const std::string scheme = text.substr(0, text.find(':'));
  if (scheme != "unix" && scheme != "tcp" && scheme != "tls") {
    return text;
  }
  const std::optional<orb::Endpoint> endpoint = orb::endpointFrom(text);
  if (!endpoint) {
    throw orb::MalformedReference("it is not unix:PATH, tcp:HOST:PORT or tls:HOST:PORT");
  }
  return orb::corbaloc(*endpoint, object_key::kManager);
}

CORBA::Object_ptr resolveReference(CORBA::ORB_ptr orb, const AgentAccess& access) {
  std::string reference = access.iorFile ? readIorFile(access) : access.reference;
  try {
    checkCharacters(access, reference);
    reference = expandEndpoint(reference);
    CORBA::Object_var object = orb::resolve(orb, reference, access.callTimeout);
    if (CORBA::is_nil(object)) {
      malformed(access, "it is nil");
    }
    return object._retn();
  } catch (const orb::MalformedReference& failure) {
    malformed(access, failure.what());
  } catch (const orb::NamingServiceError& failure) {
    namingFailed(access, failure);
  } catch (const CORBA::SystemException& failure) {
    namingFailed(orb, access, reference, failure);
  }
}

// Throws Failure for files that cannot be used.
orb::TlsOptions tlsOptions(const TlsFiles& files) {
  orb::TlsOptions options;
  options.certificate = files.certificate;
  options.key = files.key;
  options.authorities = files.authorities;
  options.revoked = files.revoked;
  if (files.certificate.empty() && files.authorities.empty()) {
    return options;
  }
  if (!orb::hasTls()) {
    throw Failure(ExitCode::kUsage, "this program was built without TLS");
  }
  try {
    orb::checkTls(options);
  } catch (const orb::TlsError& failure) {
    throw Failure(ExitCode::kUsage, std::string("TLS: ") + failure.what());
  }
  return options;
}

// The reason why the TLS connection of a failed call ended, as a clause; "" without one.
std::string tlsFailureOf(const CORBA::SystemException& failure, CORBA::Object_ptr object) {
  if (CORBA::COMM_FAILURE::_downcast(&failure) == nullptr) {
    return "";
  }
  const std::string reason = orb::takeTlsFailure();
  return reason.empty() ? "" : "TLS with " + orb::addressOf(object) + " failed: " + reason;
}

}  // namespace

orb::Options orbOptions(const AgentAccess& access) {
  static_assert(kMinMaxMessage >= orb::kMinMaxMessageBytes);
  orb::Options options;
  options.callTimeout = access.callTimeout;
  options.maxMessageBytes = access.maxMessageBytes;
  options.tls = tlsOptions(access.tls);
  return options;
}

std::string describeAgent(const AgentAccess& access) {
  if (access.iorFile) {
    return "the agent of the IOR file '" + *access.iorFile + "'";
  }
  return "the agent at '" + shorten(access.reference) + "'" +
         (access.isFromEnvironment ? " ($TOPO_AGENT)" : "");
}

std::string describeTimeout(const AgentAccess& access) {
  if (access.callTimeout.count() == 0) {
    return "in time";
  }
  std::ostringstream text;
  text << "within " << static_cast<double>(access.callTimeout.count()) / 1000
       << " seconds; raise --timeout";
  return text.str();
}

CORBA::Object_ptr resolveTarget(CORBA::ORB_ptr orb, const AgentAccess& access,
                                const Target& target) {
  CORBA::Object_var manager = resolveReference(orb, access);
  if (target.key == nullptr) {
    return manager._retn();
  }
  try {
    return orb::objectBeside(orb, manager, target.key);
  } catch (const CORBA::BAD_PARAM&) {
    badSource(access, "has no address");
  }
}

void throwWrongType(const AgentAccess& access, const Target& target) {
  const std::string object = target.key == nullptr
                                 ? "the object of "
                                 : "the object '" + std::string(target.key) + "' beside that of ";
  throw Failure(ExitCode::kCallFailed,
                object + describeSource(access) + " is not a " + target.type);
}

void throwIfExplained(const CORBA::SystemException& failure, CORBA::Object_ptr object,
                      const AgentAccess& access, const Target& target) {
  if (orb::isNotConnected(failure)) {
    throw Failure(ExitCode::kUnreachable,
                  describeAgent(access) + " cannot be reached: " + reasonOf(object, access));
  }
  const std::string tlsFailure = tlsFailureOf(failure, object);
  if (!tlsFailure.empty()) {
    throw Failure(ExitCode::kUnreachable,
                  describeAgent(access) + " cannot be reached: " + tlsFailure);
  }
  if (CORBA::OBJECT_NOT_EXIST::_downcast(&failure) != nullptr) {
    throw ObjectMissing(describeAgent(access) + " " + target.missing);
  }
}

}  // namespace topoctl
