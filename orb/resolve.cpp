#include "orb/resolve.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <optional>
#include <string_view>
#include <system_error>
#include <utility>

#include "orb/naming.h"

namespace orb {
namespace {

constexpr std::string_view kIor = "IOR:";
constexpr std::string_view kCorbaloc = "corbaloc:";
constexpr std::string_view kCorbaname = "corbaname:";

bool hasScheme(std::string_view reference, std::string_view scheme) {
  const auto equalsIgnoringCase = [](unsigned char a, unsigned char b) {
    return std::tolower(a) == std::tolower(b);
  };
  return reference.size() >= scheme.size() &&
         std::equal(scheme.begin(), scheme.end(), reference.begin(), equalsIgnoringCase);
}

bool isIiop(std::string_view address) {
  return address.substr(0, 1) == ":" || address.substr(0, 5) == "iiop:";
}

// The ORBs reject a port out of range without a reason. REQUIRES: isIiop(address).
void checkPort(std::string_view address) {
  const std::size_t version = address.find('@');
  const std::size_t host = version == std::string_view::npos ? address.find(':') : version;
  address.remove_prefix(host + 1);
  const std::size_t bracket = std::min(address.find(']'), address.size());
  const std::size_t colon = address.find(':', bracket < address.size() ? bracket : 0);
  if (colon == std::string_view::npos || colon + 1 == address.size()) {
    return;  // the ORB's default port
  }
  const std::string_view port = address.substr(colon + 1);
  std::uint16_t number = 0;
  const auto [end, error] = std::from_chars(port.data(), port.data() + port.size(), number);
  if (error != std::errc() || end != port.data() + port.size() || number == 0) {
    throw MalformedReference("the port '" + std::string(port) +
                             "' is not a number from 1 to 65535");
  }
}

std::string withVersion(std::string_view address) {
  if (!isIiop(address)) {
    return std::string(address);
  }
  checkPort(address);
  if (address.find('@') != std::string_view::npos) {
    return std::string(address);
  }
  return "iiop:1.2@" + std::string(address.substr(address.find(':') + 1));
}

// For ADDRESS,ADDRESS/KEY: the same text with a version in each address.
std::string withVersions(std::string_view location) {
  const std::size_t key = std::min(location.find('/'), location.size());
  std::string result;
  for (std::size_t start = 0; start <= key;) {
    const std::size_t end = std::min(location.find(',', start), key);
    result += withVersion(location.substr(start, end - start));
    result += location.substr(end, end < key ? 1 : 0);
    start = end + 1;
  }
  return result.append(location.substr(key));
}

// Only the form of the text can make the ORB reject it: no call is made.
CORBA::Object_ptr parse(CORBA::ORB_ptr orb, const std::string& text,
                        std::chrono::milliseconds timeout) {
  try {
    CORBA::Object_var object = orb->string_to_object(text.c_str());
    if (!CORBA::is_nil(object.in())) {
      setCallTimeout(object.in(), timeout);
    }
    return object._retn();
  } catch (const CORBA::SystemException& failure) {
    throw MalformedReference(describe(failure));
  }
}

CORBA::Object_ptr parseCorbaloc(CORBA::ORB_ptr orb, std::string_view location,
                                std::chrono::milliseconds timeout) {
  return parse(orb, std::string(kCorbaloc) + withVersions(location), timeout);
}

// The octet of an escape such as "%41" at the beginning of the text; no value for other texts.
std::optional<char> escapedOctet(std::string_view text) {
  unsigned char octet = 0;
  if (text.size() < 3 || text[0] != '%' ||
      std::from_chars(&text[1], &text[1] + 2, octet, 16).ptr != &text[1] + 2) {
    return std::nullopt;
  }
  return static_cast<char>(octet);
}

std::string unescape(std::string_view text) {
  std::string result;
  while (!text.empty()) {
    const std::optional<char> octet = escapedOctet(text);
    if (octet == '\0') {
      throw MalformedReference("'%00' stands for no character");
    }
    result += octet.value_or(text[0]);
    text.remove_prefix(octet ? 3 : 1);
  }
  return result;
}

[[noreturn]] void throwNotBound(const std::string& name) {
  throw NamingServiceError(NamingServiceError::Cause::kNotBound,
                           "has no object of the name '" + name + "'");
}

// Calls resolve_str without asking the object for its type first, so that one call is enough.
CORBA::Object_ptr lookUp(CORBA::Object_ptr service, const std::string& name,
                         std::chrono::milliseconds timeout) {
  using CosNaming::NamingContext;
  const CosNaming::NamingContextExt_var context =
      CosNaming::NamingContextExt::_unchecked_narrow(service);
  setCallTimeout(context.in(), timeout);
  try {
    CORBA::Object_var object = context->resolve_str(name.c_str());
    if (CORBA::is_nil(object.in())) {
      throwNotBound(name);
    }
    return object._retn();
  } catch (const NamingContext::NotFound&) {
    throwNotBound(name);
  } catch (const NamingContext::CannotProceed&) {
    throwNotBound(name);
  } catch (const NamingContext::InvalidName&) {
    throw MalformedReference("'" + name + "' is not a name");
  } catch (const CORBA::BAD_OPERATION&) {
    throw NamingServiceError(NamingServiceError::Cause::kNotNamingService,
                             "is not a NamingContextExt");
  }
}

// The parts of a corbaname.
struct NamedObject {
  CORBA::Object_var service;
  std::string name;
};

NamedObject parseCorbaname(CORBA::ORB_ptr orb, std::string_view reference,
                           std::chrono::milliseconds timeout) {
  const std::size_t hash = std::min(reference.find('#'), reference.size());
  std::string name = unescape(reference.substr(std::min(hash + 1, reference.size())));
  if (name.empty()) {
    throw MalformedReference("it has no #NAME");
  }
  std::string location(reference.substr(0, hash));
  if (location.find('/') == std::string::npos) {
    location += "/NameService";
  }
  return {parseCorbaloc(orb, location, timeout), std::move(name)};
}

// The ORB could resolve a corbaname itself, but it uses another timeout and reports an unbound name
// like a malformed reference.
CORBA::Object_ptr resolveName(CORBA::ORB_ptr orb, std::string_view reference,
                              std::chrono::milliseconds timeout) {
  const NamedObject named = parseCorbaname(orb, reference, timeout);
  CORBA::Object_var object = lookUp(named.service.in(), named.name, timeout);
  setCallTimeout(object.in(), timeout);
  return object._retn();
}

bool isHostAndPort(std::string_view text) {
  const std::size_t colon = text.rfind(':');
  return colon != std::string_view::npos && colon > 0 && colon + 1 < text.size() &&
         text.find_first_not_of("0123456789", colon + 1) == std::string_view::npos;
}

// HOST:PORT is the most frequent mistake: names a wrong port, and the form of an address.
[[noreturn]] void throwNoScheme(std::string_view text) {
  std::string reason = "it starts with none of IOR:, corbaloc:, corbaname:";
  if (isHostAndPort(text)) {
    const std::string address = ":" + std::string(text);
    checkPort(address);
    reason += "; write corbaloc:" + address + "/KEY for the object KEY at this address";
  }
  throw MalformedReference(reason);
}

// REQUIRES: not a corbaname.
CORBA::Object_ptr parseDirect(CORBA::ORB_ptr orb, std::string_view text,
                              std::chrono::milliseconds timeout) {
  if (hasScheme(text, kCorbaloc)) {
    return parseCorbaloc(orb, text.substr(kCorbaloc.size()), timeout);
  }
  if (hasScheme(text, kIor)) {
    if (text.size() == kIor.size()) {
      throw MalformedReference("nothing follows IOR:");  // nil on some ORBs
    }
    return parse(orb, std::string(kIor).append(text.substr(kIor.size())), timeout);
  }
  throwNoScheme(text);
}

}  // namespace

bool isCorbaname(const std::string& reference) {
  return hasScheme(reference, kCorbaname);
}

// Accepts a scheme in upper and lower case; the ORBs accept one case only.
CORBA::Object_ptr resolve(CORBA::ORB_ptr orb, const std::string& reference,
                          std::chrono::milliseconds timeout) {
  const std::string_view text = reference;
  return isCorbaname(reference) ? resolveName(orb, text.substr(kCorbaname.size()), timeout)
                                : parseDirect(orb, text, timeout);
}

CORBA::Object_ptr namingServiceOf(CORBA::ORB_ptr orb, const std::string& reference,
                                  std::chrono::milliseconds timeout) {
  const std::string_view text = reference;
  return parseCorbaname(orb, text.substr(kCorbaname.size()), timeout).service._retn();
}

void checkReference(CORBA::ORB_ptr orb, const std::string& reference) {
  const std::string_view text = reference;
  constexpr std::chrono::milliseconds kUnused{1};
  if (isCorbaname(reference)) {
    parseCorbaname(orb, text.substr(kCorbaname.size()), kUnused);
    return;
  }
  const CORBA::Object_var object = parseDirect(orb, text, kUnused);
  if (CORBA::is_nil(object.in())) {
    throw MalformedReference("it is the reference of no object");
  }
}

}  // namespace orb
