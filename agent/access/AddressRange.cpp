#include "agent/access/AddressRange.h"

#include <arpa/inet.h>

#include <algorithm>
#include <charconv>
#include <stdexcept>

namespace agent {
namespace {

constexpr int kBits = 128;
constexpr int kMappedBits = 96;  // of ::ffff:0:0/96, the prefix of mapped IPv4 addresses

constexpr std::array<unsigned char, 12> kMappedPrefix = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xff, 0xff};

// Whether the first `bits` bits are equal.
bool haveCommonPrefix(const std::array<unsigned char, 16>& a,
                      const std::array<unsigned char, 16>& b, int bits) {
  const auto whole = static_cast<std::size_t>(bits / 8);
  if (!std::equal(a.begin(), a.begin() + bits / 8, b.begin())) {
    return false;
  }
  const int rest = bits % 8;
  return rest == 0 || (a[whole] >> (8 - rest)) == (b[whole] >> (8 - rest));
}

// Returns -1 for a text that is not a number from 0 to `most`.
int parseLength(const std::string& text, int most) {
  int length = -1;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), length);
  const bool valid =
      error == std::errc() && end == text.data() + text.size() && length >= 0 && length <= most;
  return valid ? length : -1;
}

}  // namespace

std::optional<IpAddress> IpAddress::parse(const std::string& text) {
  IpAddress address;
  if (inet_pton(AF_INET, text.c_str(), &address.bytes_[kMappedPrefix.size()]) == 1) {
    std::copy(kMappedPrefix.begin(), kMappedPrefix.end(), address.bytes_.begin());
    return address;
  }
  const std::string withoutZone = text.substr(0, text.find('%'));
  if (inet_pton(AF_INET6, withoutZone.c_str(), address.bytes_.data()) == 1) {
    return address;
  }
  return std::nullopt;
}

bool IpAddress::isIpv4() const {
  return std::equal(kMappedPrefix.begin(), kMappedPrefix.end(), bytes_.begin());
}

bool IpAddress::isLoopback() const {
  constexpr unsigned char kLoopbackNet = 127;
  return isIpv4() ? bytes_[kMappedPrefix.size()] == kLoopbackNet : *this == *parse("::1");
}

AddressRange AddressRange::parse(const std::string& text) {
  const std::size_t slash = text.find('/');
  const std::optional<IpAddress> first = IpAddress::parse(text.substr(0, slash));
  if (!first || text.find('%') != std::string::npos) {
    throw std::invalid_argument("'" + text + "' is not a numeric address or ADDRESS/LENGTH");
  }
  if (slash == std::string::npos) {
    return {*first, kBits};
  }
  const bool isShort = text.find(':') == std::string::npos;  // an IPv4 address
  const int most = isShort ? kBits - kMappedBits : kBits;
  const int length = parseLength(text.substr(slash + 1), most);
  if (length < 0) {
    throw std::invalid_argument("'" + text + "' has no prefix length from 0 to " +
                                std::to_string(most));
  }
  const int bits = length + (isShort ? kMappedBits : 0);
  IpAddress rounded = *first;
  for (int bit = bits; bit < kBits; ++bit) {
    rounded.bytes_[static_cast<std::size_t>(bit / 8)] &=
        static_cast<unsigned char>(~(0x80U >> static_cast<unsigned>(bit % 8)));
  }
  if (rounded != *first) {
    throw std::invalid_argument("'" + text + "' has address bits after its prefix");
  }
  return {*first, bits};
}

bool AddressRange::contains(const IpAddress& address) const {
  const bool isOtherFamily = bits_ < kMappedBits && address.isIpv4();
  return !isOtherFamily && haveCommonPrefix(first_.bytes_, address.bytes_, bits_);
}

}  // namespace agent
