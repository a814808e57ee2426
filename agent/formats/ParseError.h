// The failure of a reader of a network format. Part of the network reader.

#ifndef AGENT_FORMATS_PARSEERROR_H
#define AGENT_FORMATS_PARSEERROR_H

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>

namespace agent {

// Thrown within agent/formats only, because the readers fail deep inside callbacks and recursion:
// NetworkReader catches it and returns an Outcome.
//
// A plain value. what() is one printable line, "PLACE: REASON". The place is line:column in content
// that is not JSON or XML, a path such as topoNodes[3].parent for a bad value, and "file" for a
// file that cannot be read.
class ParseError : public std::runtime_error {
 public:
  ParseError(const std::string& place, const std::string& reason);
};

// "line:column" of a byte offset, both counted from 1; columns count characters.
std::string linePlace(std::string_view text, std::size_t offset);

}  // namespace agent

#endif
