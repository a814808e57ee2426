#include "tests/fuzz/EncodedEvent.h"

#include <omniORB4/cdrStream.h>

#include <algorithm>

namespace fuzz {
namespace {

// Little- or big-endian values at offsets of a type code's parameters.
class Parameters {
 public:
  Parameters(const std::uint8_t* data, std::size_t size, bool isLittleEndian)
      : data_(data), size_(size), isLittleEndian_(isLittleEndian) {}

  // The next number; 0 at the end of the data.
  std::uint32_t number() {
    if (!skip((4 - offset_ % 4) % 4) || !skip(4)) {
      return 0;
    }
    const std::uint8_t* const end = data_ + offset_;
    std::uint32_t value = 0;
    for (int i = 0; i < 4; ++i) {
      value = value << 8 | (isLittleEndian_ ? end[-1 - i] : end[i - 4]);
    }
    return value;
  }

  void text() { skip(number()); }
  bool skip(std::size_t bytes) {
    isComplete_ = isComplete_ && bytes <= size_ - offset_;
    offset_ += isComplete_ ? bytes : 0;
    return isComplete_;
  }
  bool isComplete() const { return isComplete_; }
  std::size_t left() const { return size_ - offset_; }

 private:
  const std::uint8_t* const data_;
  const std::size_t size_;
  const bool isLittleEndian_;
  std::size_t offset_ = 0;
  bool isComplete_ = true;
};

// Whether the bytes look like the parameters of a structure, an exception or a value with more
// members than bytes follow.
bool hasTooManyMembers(const std::uint8_t* data, std::size_t size, bool isValue) {
  Parameters parameters(data, size, size > 0 && (data[0] & 1) != 0);
  parameters.skip(1);
  parameters.text();
  parameters.text();
  if (isValue) {
    return true;  // the members follow another type code
  }
  const std::uint32_t members = parameters.number();
  return !parameters.isComplete() || members > parameters.left();
}

constexpr std::uint32_t kStruct = 15;
constexpr std::uint32_t kException = 22;
constexpr std::uint32_t kFixed = 28;
constexpr std::uint32_t kValue = 29;

// Kinds of type codes with parameters other than the bound of a text.
bool hasLength(std::uint32_t kind) {
  constexpr std::uint32_t kReference = 14;
  constexpr std::uint32_t kText = 18;
  constexpr std::uint32_t kLocal = 33;
  return kind >= kReference && kind <= kLocal && kind != kText;
}

// Whether the bytes are a length and a text.
bool isText(const std::uint8_t* data, std::size_t size, std::uint32_t length) {
  const auto isPrintable = [](std::uint8_t octet) { return octet >= 0x20 && octet < 0x7f; };
  return length >= 4 && length <= size - 4 && data[3 + length] == 0 &&
         std::all_of(data + 4, data + 8, isPrintable);
}

// Whether the bytes can begin a type code that the ORB (4.2.5) does not survive. For a length
// beyond the end it allocates the whole length; of more members than bytes it destroys members that
// it has not allocated; a fixed-point number without a valid digit ends the process. Some bytes
// only look like such a type code.
bool isUnsafe(const std::uint8_t* data, std::size_t size, bool isLittleEndian) {
  constexpr std::size_t kHead = 8;
  Parameters head(data, kHead, isLittleEndian);
  const std::uint32_t kind = head.number();
  if (!hasLength(kind) || isText(data, size, kind)) {
    return false;
  }
  const std::uint32_t bytes = head.number();
  const bool hasMembers = kind == kStruct || kind == kException || kind == kValue;
  return kind == kFixed || bytes > size - kHead ||
         (hasMembers && hasTooManyMembers(data + kHead, bytes, kind == kValue));
}

bool hasUnsafeTypeCode(const std::uint8_t* data, std::size_t size) {
  for (std::size_t at = 0; at + 8 <= size; at += 4) {
    if (isUnsafe(data + at, size - at, true) || isUnsafe(data + at, size - at, false)) {
      return true;
    }
  }
  return false;
}

}  // namespace

std::optional<CosNotification::StructuredEvent> decodeEvent(const std::uint8_t* data,
                                                            std::size_t size) {
  if (hasUnsafeTypeCode(data, size)) {
    return std::nullopt;
  }
  cdrMemoryStream stream;
  stream.put_octet_array(data, static_cast<int>(size));
  stream.rewindInputPtr();
  try {
    CosNotification::StructuredEvent event;
    event <<= stream;
    return event;
  } catch (const CORBA::SystemException&) {
    return std::nullopt;
  }
}

}  // namespace fuzz
