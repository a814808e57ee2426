// Parser of the GIOP headers that the server reads before the ORB does.

#ifndef ORB_INCOMING_GIOP_H
#define ORB_INCOMING_GIOP_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace orb::giop {

constexpr std::size_t kHeaderBytes = 12;
// In GIOP 1.2 the request id follows the header of a Fragment message.
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
  std::size_t bodyBytes = 0;  // declared size without the header
};

// Returns no value for bytes that are not a header of GIOP 1.0, 1.1 or 1.2.
// REQUIRES: kHeaderBytes bytes.
std::optional<Header> parseHeader(const char* bytes);

// Turns the header of a first fragment into the header of an unfragmented message. `messageBytes`
// includes the header. REQUIRES: a header that parseHeader() accepts.
void rewriteHeader(char* header, std::size_t messageBytes);

std::uint32_t parseNumber(const char* bytes, bool littleEndian);

struct RequestHead {
  std::uint32_t id = 0;
  std::uint8_t response = 0;  // the octet response_expected or response_flags
  std::string operation;
  bool isWhole = false;  // false: the service contexts do not end within the parsed bytes
};

// Parses the head of a request. `begin` is the beginning of the message, header included. Returns
// no value if the head is malformed or does not end within `begin`.
std::optional<RequestHead> parseRequestHead(const Header& header, std::string_view begin);

// Whether a complete Request or LocateRequest names its target by an object key. GIOP 1.2 also
// allows profiles and references, which not every ORB supports. True if the message ends before the
// target.
bool isTargetKey(const Header& header, std::string_view begin);

// Returns a request without arguments for an empty object key. The ORB decodes this message in
// place of a refused request.
std::string emptyRequest(std::uint8_t minorVersion, const RequestHead& head);

}  // namespace orb::giop

#endif
