// Replies for a RawPeer.

#ifndef TESTS_UNIT_ORB_ANSWERS_H
#define TESTS_UNIT_ORB_ANSWERS_H

#include <cstdint>
#include <cstring>
#include <string>

#include "orb/corba.h"
#include "tests/unit/orb/RawClient.h"

namespace orb_tests {

constexpr auto kLocateRequest = static_cast<Message::Type>(3);
constexpr auto kLocateReply = static_cast<Message::Type>(4);

// Returns the id of a request. REQUIRES: a GIOP 1.2 message in the byte order of this host.
inline std::uint32_t idOf(const std::string& request) {
  std::uint32_t id = 0;
  std::memcpy(&id, request.data() + 12, sizeof id);
  return id;
}

inline bool isLocateRequest(const std::string& request) {
  return request.at(7) == static_cast<char>(kLocateRequest);
}

// Returns the reply of an operation with a boolean result.
inline std::string booleanReply(const std::string& request, bool result) {
  return Message(2, Message::Type::kReply, false)
      .number(idOf(request))
      .number(0)  // NO_EXCEPTION
      .number(0)  // service contexts
      .align(8)
      .octet(result ? 1 : 0)
      .bytes();
}

// Returns the reply that forwards a request, or a LocateRequest, to the object at a reference.
inline std::string forwardTo(CORBA::ORB_ptr orb, const std::string& reference,
                             const std::string& request) {
  const CORBA::Object_var target = orb->string_to_object(reference.c_str());
  const CORBA::String_var text = orb->object_to_string(target.in());
  std::string encoded;  // a byte for the byte order, padding, and the reference
  for (const char* digits = text.in() + 4; digits[0] != '\0'; digits += 2) {
    encoded.push_back(static_cast<char>(std::stoi(std::string(digits, 2), nullptr, 16)));
  }
  const bool locates = isLocateRequest(request);
  Message reply(2, locates ? kLocateReply : Message::Type::kReply, false);
  reply.number(idOf(request)).number(locates ? 2 : 3);  // OBJECT_FORWARD, LOCATION_FORWARD
  if (!locates) {
    reply.number(0).align(8);  // service contexts
  }
  return reply.raw(encoded.substr(4)).bytes();
}

}  // namespace orb_tests

#endif
