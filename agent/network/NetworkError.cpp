#include "agent/network/NetworkError.h"

#include "agent/base/Text.h"

namespace agent {
namespace {

constexpr std::size_t kMostOfAPath = 4096;

std::string messageOf(const std::string& file, const std::string& place,
                      const std::string& reason) {
  return printable(file, kMostOfAPath) + ": " + printable(place) + ": " + printable(reason);
}

}  // namespace

NetworkError::NetworkError(const std::string& file, const std::string& place,
                           const std::string& reason)
    : std::runtime_error(messageOf(file, place, reason)),
      file_(printable(file, kMostOfAPath)),
      place_(printable(place)),
      reason_(printable(reason)) {}

}  // namespace agent
