// GIOP messages to the agent on a TCP connection of the loopback.
//
// An input is a list of records: a byte with the form in its two lowest bits, two bytes with the
// length of the content (little-endian), and the content.
//   form 0     the content is written as it is
//   form 1     a message: the byte's upper bits and the content give type, flags and body; magic,
//              version and size are right
//   form 2, 3  a request in GIOP 1.2: the first two bytes of the content select object and
//              operation, the rest are the arguments
// So that state does not pile up, the network is replaced from time to time.

#include <poll.h>
#include <sys/socket.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>

#include "agent/Agent.h"
#include "idl/ObjectKeys.h"
#include "tests/fuzz/LoopbackOnly.h"
#include "tests/fuzz/Require.h"
#include "tests/unit/orb/RawClient.h"

namespace {

using fuzz::require;
using orb_tests::Message;

constexpr std::array<std::string_view, 4> kKeys = {object_key::kManager, object_key::kConsole,
                                                   object_key::kSession, "unknown"};

constexpr std::array<std::string_view, 47> kOperations = {
    "_is_a",
    "_non_existent",
    "_interface",
    "_component",
    "getTopoSubnetworkViewInfo",
    "getProtectSubnetworkViewInfo",
    "getViewInfoByTopoSubnetwork",
    "getClockSourceSubnetworkViewInfo",
    "getAllClockSourceViewlTopologicalLinks",
    "getCapabilities",
    "setNativeEMSName",
    "setUserLabel",
    "setOwner",
    "setAdditionalInfo",
    "subscribe",
    "getEventAccess",
    "createNode",
    "deleteNode",
    "renameNode",
    "moveNode",
    "changeNode",
    "createElement",
    "renameElement",
    "setElementShown",
    "deleteElement",
    "createClockPosition",
    "changeClockPosition",
    "deleteClockPosition",
    "createClockLink",
    "changeClockLink",
    "deleteClockLink",
    "setLabel",
    "deleteLabel",
    "getObject",
    "importNetwork",
    "beginBackup",
    "continueBackup",
    "endBackup",
    "setTestSwitch",
    "getStatus",
    "next_n",
    "getLength",
    "destroy",
    "ping",
    "unsubscribe",
    "unknown",
    "beginExport",
};

// The module stays loaded: libFuzzer allows only a limited number of loaded files.
constexpr std::string_view kExcluded = "reloadModule";

constexpr const char* kNetwork = R"({
  "format": "topo-network/1", "ems": "ems",
  "topoNodes": [
    {"id": "core", "name": "Core", "type": 2},
    {"id": "NE=7", "parent": "core", "name": "Seven", "type": 1, "params": [1, 2]}],
  "networkElements": [{"number": 7, "name": "Seven"}, {"number": 8, "name": "Eight"}],
  "clockPositions": [{"reference": "NE=7", "label": "a", "values": [1, 2]}],
  "clockLinks": [{"id": "l", "name": "Link", "a": "NE=7", "z": "NE=8"}]
})";
std::string request(std::string_view key, std::string_view operation, std::string_view arguments) {
  constexpr char kMinorVersion = 2;
  Message message(kMinorVersion, Message::Type::kRequest, false);
  message.number(1).octet(3).raw(std::string(3, '\0')).number(0);  // the target is an object key
  message.octets(std::string(key)).text(std::string(operation)).number(0);
  if (!arguments.empty()) {
    message.align(8).raw(std::string(arguments));
  }
  return message.bytes();
}

// The agent with a network in memory. A process has one, until its end.
class ServedAgent {
 public:
  ServedAgent() {
    require(agent_.start(), "the agent does not start");
    const std::string line = agent_.readyLine();
    const std::string_view mark = "endpoint 127.0.0.1:";
    endpoint_.port = static_cast<std::uint16_t>(
        std::strtoul(line.c_str() + line.find(mark) + mark.size(), nullptr, 10));
    fuzz::allowOnlyPort(endpoint_.port);
  }

  // Writes the bytes and half-closes the connection. The server answers and closes the connection.
  void exchange(const std::string& bytes) {
    const orb_tests::RawClient client(endpoint_);
    client.send(bytes);
    client.endSending();
    require(client.isDrained(), "the agent has not closed a connection in time");
  }

  void restoreNetwork() {
    const std::string content = kNetwork;
    Message arguments(2, Message::Type::kRequest, false);
    // Options: replace, no dry run; the numbers of the file.
    arguments.align(8).text("file").octets(content).octet(1).octet(0).number(0);
    constexpr std::size_t kStart = 16;  // of the arguments in the message
    exchange(request(object_key::kConsole, "importNetwork", arguments.bytes().substr(kStart)));
  }

 private:
  static agent::Options options() {
    agent::Options options;
    options.store = ":memory:";
    options.createStore = true;
    options.emsName = "ems";
    options.endpoints = {{"127.0.0.1", 0}};
    options.module = MODULE_FILE;
    options.logLevel = 0;
    options.maxMessageBytes = std::size_t{1} << 20;
    options.iteratorTimeoutSeconds = 1;
    return options;
  }

  agent::Agent agent_{options()};
  orb::Endpoint endpoint_{"127.0.0.1", 0};
};

ServedAgent& startAgent() {
  static std::unique_ptr<ServedAgent> agent;
  agent = std::make_unique<ServedAgent>();
  // Before the end of the libraries' own objects.
  std::atexit([] { agent.reset(); });
  return *agent;
}

// One record of an input as bytes for the connection.
std::string encoded(std::uint8_t form, std::string_view content) {
  const auto octetAt = [&](std::size_t index) {
    return index < content.size() ? static_cast<std::uint8_t>(content[index]) : std::uint8_t{0};
  };
  switch (form & 3) {
    case 0:
      return std::string(content);
    case 1: {
      const auto type = static_cast<Message::Type>((form >> 2) & 7);
      const char minorVersion = static_cast<char>((form >> 5) % 3);
      const bool moreFragments = (form & 0x80) != 0;
      return Message(minorVersion, type, moreFragments).raw(std::string(content)).bytes();
    }
    default:
      return request(kKeys[octetAt(0) % kKeys.size()], kOperations[octetAt(1) % kOperations.size()],
                     content.substr(std::min<std::size_t>(2, content.size())));
  }
}

std::string messagesOf(std::string_view input) {
  constexpr std::size_t kHeader = 3;
  std::string bytes;
  while (input.size() >= kHeader) {
    const auto form = static_cast<std::uint8_t>(input[0]);
    const std::size_t length = static_cast<std::uint8_t>(input[1]) +
                               std::size_t{256} * static_cast<std::uint8_t>(input[2]);
    input.remove_prefix(kHeader);
    bytes += encoded(form, input.substr(0, length));
    input.remove_prefix(std::min(length, input.size()));
  }
  return bytes;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static ServedAgent& agent = startAgent();
  static unsigned runs = 0;
  constexpr unsigned kRunsOfANetwork = 1000;
  const std::string bytes = messagesOf({reinterpret_cast<const char*>(data), size});
  if (bytes.find(kExcluded) != std::string::npos) {
    return -1;
  }
  if (runs++ % kRunsOfANetwork == 0) {
    agent.restoreNetwork();
  }
  agent.exchange(bytes);
  return 0;
}
