// The parts of GIOP messages that must be known before the ORB reads a message.

#ifndef ORB_INCOMING_GIOP_H
#define ORB_INCOMING_GIOP_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace orb::giop {

constexpr std::size_t kHeaderBytes = 12;
// A fragment of GIOP 1.2 repeats the id of its request after the header.
constexpr std::size_t kRequestIdBytes = 4;

enum class Type : std::uint8_t {
  kRequest,
  kReply,
  kCancelRequest,
  kLocateRequest,
  kLocateReply,
  kCloseConnection,
  kMessageError,
  kFragment,
};

struct Header {
  std::uint8_t minorVersion = 0;
  bool littleEndian = false;
  bool moreFragments = false;
  Type type = Type::kRequest;
  std::size_t bodyBytes = 0;  // as declared, without the header
};

// No value: not the header of a message of GIOP 1.0, 1.1 or 1.2. REQUIRES: kHeaderBytes bytes.
std::optional<Header> parseHeader(const char* bytes);

// Turns the header of the first fragment into that of an unfragmented message of so many bytes,
// header included. REQUIRES: a header that parseHeader accepts.
void rewriteHeader(char* header, std::size_t messageBytes);

std::uint32_t parseNumber(const char* bytes, bool littleEndian);

struct RequestHead {
  std::uint32_t id = 0;
  std::uint8_t response = 0;  // the octet that says whether a reply is expected
  std::string operation;
  bool isWhole = false;  // false: the service contexts do not end within what was parsed
};

// The head of a request. `begin` is the beginning of the message, header included. No value: the
// head does not end within it, or is malformed.
std::optional<RequestHead> parseRequestHead(const Header& header, std::string_view begin);

// Whether a complete request or LocateRequest names its object by its key, the only way that every
// ORB serves; GIOP 1.2 also has profiles and whole references. True when the message ends before.
bool isTargetKey(const Header& header, std::string_view begin);

// A request without arguments for a nameless object, in place of one that is not to be decoded.
std::string emptyRequest(std::uint8_t minorVersion, const RequestHead& head);

}  // namespace orb::giop

#endif
