#include "agent/formats/ParseError.h"

#include <algorithm>

#include "agent/network/NetworkChecks.h"

namespace agent {
namespace {

bool startsCharacter(char byte) {
  return (static_cast<unsigned char>(byte) & 0xc0) != 0x80;
}

}  // namespace

ParseError::ParseError(const std::string& place, const std::string& reason)
    : std::runtime_error(invalidInput(place, reason).reason) {}

std::string linePlace(std::string_view text, std::size_t offset) {
  const std::string_view before = text.substr(0, std::min(offset, text.size()));
  const auto line = std::count(before.begin(), before.end(), '\n') + 1;
  const std::string_view inLine = before.substr(before.rfind('\n') + 1);
  const auto column = std::count_if(inLine.begin(), inLine.end(), startsCharacter) + 1;
  return std::to_string(line) + ':' + std::to_string(column);
}

}  // namespace agent
