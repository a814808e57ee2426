// Ranges of IP addresses.

#ifndef AGENT_ACCESS_ADDRESSRANGE_H
#define AGENT_ACCESS_ADDRESSRANGE_H

#include <array>
#include <optional>
#include <string>
#include <tuple>

namespace agent {

// A numeric IP address. An IPv4 address equals its IPv4-mapped IPv6 address.
//
// Thread-safety, ownership and errors: a plain value.
class IpAddress {
 public:
  // Empty for a text that is not a numeric address. The zone of an IPv6 address ("%eth0") is
  // ignored.
  static std::optional<IpAddress> parse(const std::string& text);

  bool operator==(const IpAddress& other) const { return bytes_ == other.bytes_; }
  bool operator!=(const IpAddress& other) const { return bytes_ != other.bytes_; }

  bool isLoopback() const;  // in 127.0.0.0/8, or ::1
  bool isIpv4() const;

 private:
  friend class AddressRange;

  std::array<unsigned char, 16> bytes_{};  // IPv4 addresses in their mapped form
};

// The addresses with a common prefix, such as 10.1.0.0/16, 2001:db8::/32 or the single address
// 192.0.2.1. A range of IPv6 addresses contains no IPv4 address, unless its prefix is in
// ::ffff:0:0/96.
//
// Thread-safety and ownership: a plain value. Errors: parse throws std::invalid_argument.
class AddressRange {
 public:
  // what() of the exception is a clause such as "'10.1.0.0/33' has no prefix length from 0 to 32".
  static AddressRange parse(const std::string& text);

  bool contains(const IpAddress& address) const;

  // An arbitrary order, for ordered containers.
  bool operator<(const AddressRange& other) const {
    return std::tie(first_.bytes_, bits_) < std::tie(other.first_.bytes_, other.bits_);
  }

 private:
  AddressRange(const IpAddress& first, int bits) : first_(first), bits_(bits) {}

  IpAddress first_;
  int bits_;  // of the prefix in 128 bits
};

}  // namespace agent

#endif
