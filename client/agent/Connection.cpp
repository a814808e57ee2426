#include "client/agent/Connection.h"

#include <algorithm>
#include <cctype>
#include <system_error>

#include "client/base/Failure.h"
#include "client/base/File.h"
#include "idl/ObjectKeys.h"
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
  return access.iorFile ? "the IOR file '" + *access.iorFile + "'"
                        : "the reference '" + shorten(access.reference) + "'";
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

// Rejected although a NAME may hold spaces: white space comes from a wrong file or a wrong quote.
void checkCharacters(const AgentAccess& access, const std::string& reference) {
  if (std::any_of(reference.begin(), reference.end(),
                  [](char c) { return static_cast<unsigned char>(c) <= ' '; })) {
    malformed(access, "it contains white space or control characters");
  }
}

[[noreturn]] void namingFailed(const AgentAccess& access, ExitCode code,
                               const std::string& reason) {
  throw Failure(code, "the naming service of '" + shorten(access.reference) + "' " + reason);
}

[[noreturn]] void namingFailed(const AgentAccess& access, const orb::NamingServiceError& failure) {
  const bool notBound = failure.cause() == orb::NamingServiceError::Cause::kNotBound;
  namingFailed(access, notBound ? ExitCode::kUnreachable : ExitCode::kCallFailed, failure.what());
}

[[noreturn]] void namingFailed(const AgentAccess& access, const CORBA::SystemException& failure) {
  const bool unreachable = orb::isUnreachable(failure);
  namingFailed(access, unreachable ? ExitCode::kUnreachable : ExitCode::kCallFailed,
               (unreachable ? "is not reachable: " : "failed: ") + orb::describe(failure));
}

CORBA::Object_ptr resolve(CORBA::ORB_ptr orb, const AgentAccess& access) {
  const std::string reference = access.iorFile ? readIorFile(access) : access.reference;
  try {
    checkCharacters(access, reference);
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
    namingFailed(access, failure);
  }
}

CORBA::Object_ptr resolveBeside(CORBA::ORB_ptr orb, const AgentAccess& access, const char* key) {
  const CORBA::Object_var manager = resolve(orb, access);
  try {
    return orb::objectBeside(orb, manager, key);
  } catch (const CORBA::BAD_PARAM&) {
    badSource(access, "has no address");
  }
}

template <typename Interface>
typename Interface::_var_type connectBeside(CORBA::ORB_ptr orb, const AgentAccess& access,
                                            const char* key, const char* type) {
  const CORBA::Object_var object = resolveBeside(orb, access, key);
  typename Interface::_var_type narrowed = Interface::_narrow(object);
  if (CORBA::is_nil(narrowed)) {
    throw Failure(ExitCode::kCallFailed, std::string("the object '") + key + "' beside that of " +
                                             describeSource(access) + " is not a " + type);
  }
  return narrowed;
}

}  // namespace

orb::Options orbOptions(const AgentAccess& access) {
  static_assert(kMinMaxMessage >= orb::kMinMaxMessageBytes);
  orb::Options options;
  options.callTimeout = access.callTimeout;
  options.maxMessageBytes = access.maxMessageBytes;
  return options;
}

std::string describeAgent(const AgentAccess& access) {
  return access.iorFile ? "the agent of the IOR file '" + *access.iorFile + "'"
                        : "the agent at '" + shorten(access.reference) + "'";
}

TopoManagementManager::TopoMgr_I_var connectManager(CORBA::ORB_ptr orb, const AgentAccess& access) {
  const CORBA::Object_var object = resolve(orb, access);
  TopoManagementManager::TopoMgr_I_var manager = TopoManagementManager::TopoMgr_I::_narrow(object);
  if (CORBA::is_nil(manager)) {
    throw Failure(ExitCode::kCallFailed,
                  "the object of " + describeSource(access) + " is not a TopoMgr_I");
  }
  return manager;
}

TopoAgent::Console_I_var connectConsole(CORBA::ORB_ptr orb, const AgentAccess& access) {
  return connectBeside<TopoAgent::Console_I>(orb, access, object_key::kConsole, "Console_I");
}

TopoAgent::Session_I_var connectSession(CORBA::ORB_ptr orb, const AgentAccess& access) {
  return connectBeside<TopoAgent::Session_I>(orb, access, object_key::kSession, "Session_I");
}

}  // namespace topoctl
