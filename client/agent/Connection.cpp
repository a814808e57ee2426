#include "client/agent/Connection.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdlib>
#include <cstring>
#include <system_error>

#include "client/base/Failure.h"
#include "client/base/File.h"
#include "idl/ObjectKeys.h"
#include "orb/naming.h"

namespace topoctl {
namespace {

// A reference with many addresses has a few thousand characters.
constexpr std::size_t kMaxIorFileBytes = std::size_t{1024} * 1024;

constexpr std::size_t kMaxShownReference = 100;  // characters

// An IOR may have thousands of characters, which say nothing to people.
std::string shorten(const std::string& reference) {
  return reference.size() <= kMaxShownReference ? reference
                                                : reference.substr(0, kMaxShownReference) + "...";
}

// Where a reference came from, for messages about it.
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

bool hasScheme(const std::string& reference, const std::string& scheme) {
  return reference.size() >= scheme.size() &&
         std::equal(scheme.begin(), scheme.end(), reference.begin(), [](char a, char b) {
           return a == std::tolower(static_cast<unsigned char>(b));
         });
}

void checkForm(const AgentAccess& access, const std::string& reference) {
  const std::array<const char*, 3> schemes = {"ior:", "corbaloc:", "corbaname:"};
  if (std::none_of(schemes.begin(), schemes.end(),
                   [&reference](const char* scheme) { return hasScheme(reference, scheme); })) {
    malformed(access, "it starts with none of IOR:, corbaloc:, corbaname:");
  }
  if (std::any_of(reference.begin(), reference.end(),
                  [](char c) { return static_cast<unsigned char>(c) <= ' '; })) {
    malformed(access, "it contains white space or control characters");
  }
}

// An address without a version means GIOP 1.0, which carries no text beyond ISO-8859-1.
std::string withVersion(const std::string& address) {
  const bool isIiop = address.rfind(':', 0) == 0 || address.rfind("iiop:", 0) == 0;
  if (!isIiop || address.find('@') != std::string::npos) {
    return address;
  }
  return "iiop:1.2@" + address.substr(address.find(':') + 1);
}

// For corbaloc:ADDRESS,ADDRESS/KEY: the same with a version in each address.
std::string withVersions(const std::string& corbaloc) {
  const std::size_t addresses = std::strlen("corbaloc:");
  const std::size_t key = std::min(corbaloc.find('/'), corbaloc.size());
  std::string result = "corbaloc:";  // the ORB takes the scheme in lower case alone
  for (std::size_t start = addresses; start <= key;) {
    const std::size_t end = std::min(corbaloc.find(',', start), key);
    result += withVersion(corbaloc.substr(start, end - start)) + corbaloc.substr(end, end < key);
    start = end + 1;
  }
  return result + corbaloc.substr(key);
}

// For a text that needs no call: nothing but its form can make the ORB refuse it.
CORBA::Object_ptr toObject(CORBA::ORB_ptr orb, const AgentAccess& access, const std::string& text) {
  CORBA::Object_var object;
  try {
    const std::string full = hasScheme(text, "corbaloc:") ? withVersions(text) : text;
    object = orb->string_to_object(full.c_str());
  } catch (const CORBA::SystemException& failure) {
    malformed(access, orb::describe(failure));
  }
  if (CORBA::is_nil(object)) {
    malformed(access, "it is nil");
  }
  return object._retn();
}

std::string decodePercent(const AgentAccess& access, const std::string& text) {
  std::string decoded;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '%') {
      decoded += text[i];
      continue;
    }
    const std::string digits = text.substr(i + 1, 2);
    const bool valid = digits.size() == 2 && std::all_of(digits.begin(), digits.end(), [](char c) {
                         return std::isxdigit(static_cast<unsigned char>(c)) != 0;
                       });
    if (!valid || digits == "00") {
      malformed(access, "'%" + digits + "' stands for no character");
    }
    decoded += static_cast<char>(std::stoi(digits, nullptr, 16));
    i += 2;
  }
  return decoded;
}

// The two halves of corbaname:ADDRESSES[/KEY]#NAME.
struct CorbaName {
  std::string service;  // as a corbaloc
  std::string name;
};

CorbaName splitCorbaName(const AgentAccess& access, const std::string& reference) {
  const std::string rest = reference.substr(std::strlen("corbaname:"));
  const std::size_t hash = rest.find('#');
  if (hash == std::string::npos || hash + 1 == rest.size()) {
    malformed(access, "it has no #NAME");
  }
  std::string address = rest.substr(0, hash);
  if (address.find('/') == std::string::npos) {
    address += "/NameService";
  }
  return {"corbaloc:" + address, decodePercent(access, rest.substr(hash + 1))};
}

[[noreturn]] void namingFailed(const AgentAccess& access, const CORBA::SystemException& failure) {
  const bool unreachable = orb::isUnreachable(failure);
  throw Failure(unreachable ? ExitCode::kUnreachable : ExitCode::kCallFailed,
                "the naming service of '" + shorten(access.reference) + "' " +
                    (unreachable ? "is not reachable: " : "failed: ") + orb::describe(failure));
}

CosNaming::NamingContextExt_ptr namingService(CORBA::ORB_ptr orb, const AgentAccess& access,
                                              const std::string& reference) {
  const CORBA::Object_var object = toObject(orb, access, reference);
  CosNaming::NamingContextExt_var service = CosNaming::NamingContextExt::_narrow(object);
  if (CORBA::is_nil(service)) {
    throw Failure(ExitCode::kCallFailed, "the naming service of '" + shorten(access.reference) +
                                             "' is not a NamingContextExt");
  }
  return service._retn();
}

[[noreturn]] void notBound(const AgentAccess& access, const std::string& name) {
  throw Failure(ExitCode::kUnreachable, "the naming service of '" + shorten(access.reference) +
                                            "' has no object of the name '" + name + "'");
}

// Resolved here rather than by the ORB, which reports an unbound name and a malformed reference
// alike.
CORBA::Object_ptr resolveName(CORBA::ORB_ptr orb, const AgentAccess& access,
                              const std::string& reference) {
  const CorbaName parts = splitCorbaName(access, reference);
  try {
    const CosNaming::NamingContextExt_var service = namingService(orb, access, parts.service);
    CORBA::Object_var object = service->resolve_str(parts.name.c_str());
    if (CORBA::is_nil(object)) {
      notBound(access, parts.name);
    }
    return object._retn();
  } catch (const CosNaming::NamingContext::NotFound&) {
    notBound(access, parts.name);
  } catch (const CosNaming::NamingContext::CannotProceed&) {
    notBound(access, parts.name);
  } catch (const CosNaming::NamingContext::InvalidName&) {
    malformed(access, "'" + parts.name + "' is not a name");
  } catch (const CORBA::SystemException& failure) {
    namingFailed(access, failure);
  }
}

CORBA::Object_ptr resolve(CORBA::ORB_ptr orb, const AgentAccess& access) {
  const std::string reference = access.iorFile ? readIorFile(access) : access.reference;
  checkForm(access, reference);
  return hasScheme(reference, "corbaname:") ? resolveName(orb, access, reference)
                                            : toObject(orb, access, reference);
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
