// What is wrong with a network file.

#ifndef AGENT_NETWORK_NETWORKERROR_H
#define AGENT_NETWORK_NETWORKERROR_H

#include <stdexcept>
#include <string>

namespace agent {

// what() is exactly one line, "FILE: PLACE: REASON", whatever the file holds: parts of it that are
// quoted have been made harmless. The place is line:column where the file cannot be parsed, a path
// such as topoNodes[3].parent where its content is wrong, and "file" where it cannot be read.
class NetworkError : public std::runtime_error {
 public:
  NetworkError(const std::string& file, const std::string& place, const std::string& reason);

  const std::string& file() const { return file_; }
  const std::string& place() const { return place_; }
  const std::string& reason() const { return reason_; }

 private:
  std::string file_;
  std::string place_;
  std::string reason_;
};

// The same before the file is known: what the readers of the formats throw. Parts of the input in
// the reason need not be harmless yet.
struct Refusal {
  std::string place;
  std::string reason;
};

}  // namespace agent

#endif
