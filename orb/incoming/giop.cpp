#include "giop.h"

#include <cstring>
#include <utility>

namespace orb::giop {
namespace {

constexpr std::size_t kFlags = 6;  // offsets in the header
constexpr std::size_t kType = 7;
constexpr std::size_t kSize = 8;

constexpr unsigned kLittleEndianFlag = 1;
constexpr unsigned kMoreFragmentsFlag = 2;

constexpr unsigned kKeyTarget = 0;  // kinds of targets in GIOP 1.2
constexpr unsigned kReferenceTarget = 2;

std::uint8_t octetAt(const char* bytes, std::size_t offset) {
  return static_cast<std::uint8_t>(bytes[offset]);
}

void writeNumber(char* bytes, std::uint32_t value, bool littleEndian) {
  for (unsigned i = 0; i < 4; ++i) {
    bytes[i] = static_cast<char>(value >> (8 * (littleEndian ? i : 3 - i)));
  }
}

// Reads a message from its first byte, to which numbers are aligned. After a read beyond the end,
// failed() is true and all values are meaningless.
class Reader {
 public:
  Reader(std::string_view bytes, bool littleEndian) : bytes_(bytes), littleEndian_(littleEndian) {
    skip(kHeaderBytes);
  }

  bool failed() const { return failed_; }

  void skip(std::size_t count) {
    failed_ = failed_ || count > bytes_.size() - at_;
    at_ += failed_ ? 0 : count;
  }

  std::uint8_t octet() {
    const std::size_t begin = at_;
    skip(1);
    return failed_ ? std::uint8_t{0} : octetAt(bytes_.data(), begin);
  }

  std::uint16_t shortNumber() {
    skip(at_ % 2);
    const unsigned first = octet();
    const unsigned second = octet();
    return static_cast<std::uint16_t>(littleEndian_ ? first | second << 8 : first << 8 | second);
  }

  std::uint32_t number() {
    skip((4 - at_ % 4) % 4);
    const std::size_t begin = at_;
    skip(4);
    return failed_ ? 0 : parseNumber(bytes_.data() + begin, littleEndian_);
  }

  // A sequence of octets, or a string with its terminating zero.
  std::string_view octets() {
    const std::uint32_t count = number();
    const std::size_t begin = at_;
    skip(count);
    return failed_ ? std::string_view() : bytes_.substr(begin, count);
  }

 private:
  const std::string_view bytes_;
  const bool littleEndian_;
  std::size_t at_ = 0;
  bool failed_ = false;
};

void skipServiceContexts(Reader& reader) {
  const std::uint32_t count = reader.number();
  for (std::uint32_t i = 0; i < count && !reader.failed(); ++i) {
    reader.number();
    reader.octets();
  }
}

// Skips the target of a GIOP 1.2 request: an object key, a profile, or a reference.
void skipTarget(Reader& reader) {
  const std::uint16_t kind = reader.shortNumber();
  if (kind == kReferenceTarget) {
    reader.number();
    reader.octets();
  }
  const std::uint32_t profiles = kind == kReferenceTarget ? reader.number() : 1;
  for (std::uint32_t i = 0; i < profiles && !reader.failed(); ++i) {
    if (kind != kKeyTarget) {
      reader.number();
    }
    reader.octets();
  }
}

// Appends numbers and octets to a little-endian message.
class Writer {
 public:
  explicit Writer(std::uint8_t minorVersion) : bytes_(kHeaderBytes, '\0') {
    std::memcpy(bytes_.data(), "GIOP\1", 5);
    bytes_[5] = static_cast<char>(minorVersion);
    bytes_[kFlags] = kLittleEndianFlag;
  }

  void octet(std::uint8_t value) { bytes_ += static_cast<char>(value); }

  void number(std::uint32_t value) {
    bytes_.append((4 - bytes_.size() % 4) % 4, '\0');
    bytes_.append(4, '\0');
    writeNumber(bytes_.data() + bytes_.size() - 4, value, true);
  }

  void text(const std::string& value) {
    number(static_cast<std::uint32_t>(value.size() + 1));
    bytes_.append(value.c_str(), value.size() + 1);
  }

  std::string message() {
    rewriteHeader(bytes_.data(), bytes_.size());
    return std::move(bytes_);
  }

 private:
  std::string bytes_;
};

}  // namespace

std::uint32_t parseNumber(const char* bytes, bool littleEndian) {
  std::uint32_t value = 0;
  for (unsigned i = 0; i < 4; ++i) {
    value = value << 8 | octetAt(bytes, littleEndian ? 3 - i : i);
  }
  return value;
}

std::optional<Header> parseHeader(const char* bytes) {
  Header header;
  header.minorVersion = octetAt(bytes, 5);
  const std::uint8_t flags = octetAt(bytes, kFlags);
  const std::uint8_t type = octetAt(bytes, kType);
  if (std::memcmp(bytes, "GIOP\1", 5) != 0 || header.minorVersion > 2 ||
      type > static_cast<std::uint8_t>(Type::kFragment)) {
    return std::nullopt;
  }
  header.littleEndian = (flags & kLittleEndianFlag) != 0;
  header.moreFragments = header.minorVersion > 0 && (flags & kMoreFragmentsFlag) != 0;
  header.type = static_cast<Type>(type);
  header.bodyBytes = parseNumber(bytes + kSize, header.littleEndian);
  return header;
}

void rewriteHeader(char* header, std::size_t messageBytes) {
  const unsigned flags = octetAt(header, kFlags);
  header[kFlags] = static_cast<char>(flags & ~kMoreFragmentsFlag);
  writeNumber(header + kSize, static_cast<std::uint32_t>(messageBytes - kHeaderBytes),
              (flags & kLittleEndianFlag) != 0);
}

std::optional<RequestHead> parseRequestHead(const Header& header, std::string_view begin) {
  Reader reader(begin, header.littleEndian);
  RequestHead head;
  if (header.minorVersion < 2) {
    skipServiceContexts(reader);
  }
  head.id = reader.number();
  head.response = reader.octet();
  if (header.minorVersion > 0) {
    reader.skip(3);
  }
  if (header.minorVersion < 2) {
    reader.octets();  // the object's key
  } else {
    skipTarget(reader);
  }
  const std::string_view operation = reader.octets();
  if (reader.failed() || operation.empty()) {
    return std::nullopt;
  }
  head.operation = operation.substr(0, operation.find('\0'));
  if (header.minorVersion == 2) {
    skipServiceContexts(reader);
  }
  head.isWhole = !reader.failed();
  return head;
}

bool isTargetKey(const Header& header, std::string_view begin) {
  if (header.minorVersion < 2) {
    return true;
  }
  Reader reader(begin, header.littleEndian);
  reader.number();
  if (header.type == Type::kRequest) {
    reader.number();  // response_flags and three reserved octets
  }
  const std::uint16_t kind = reader.shortNumber();
  return reader.failed() || kind == kKeyTarget;
}

std::string emptyRequest(std::uint8_t minorVersion, const RequestHead& head) {
  Writer writer(minorVersion);
  if (minorVersion < 2) {
    writer.number(0);  // service contexts
  }
  writer.number(head.id);
  writer.octet(head.response);
  if (minorVersion > 0) {
    writer.octet(0);
    writer.octet(0);
    writer.octet(0);
  }
  if (minorVersion == 2) {
    writer.number(0);  // the target is an object key
  }
  writer.number(0);  // an empty key
  writer.text(head.operation);
  writer.number(0);  // no principal (GIOP 1.0, 1.1) or no service contexts (1.2)
  return writer.message();
}

}  // namespace orb::giop
