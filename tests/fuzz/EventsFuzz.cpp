// Structured events on the way of topoctl watch: decoding, both formats of lines, and the known
// nodes.

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>

#include "client/watch/Event.h"
#include "client/watch/EventLines.h"
#include "client/watch/KnownNodes.h"
#include "orb/orb.h"
#include "tests/fuzz/EncodedEvent.h"
#include "tests/fuzz/Require.h"

namespace {

using fuzz::require;
using topoctl::Event;
using topoctl::Format;

std::string lineOf(const Event& event, Format format) {
  std::ostringstream out;
  topoctl::EventLines(out, format, [] { return topoctl::TimePoint(); }).printEvent(event);
  const std::string text = out.str();
  require(!text.empty() && text.back() == '\n', "a line has no end");
  const std::string line = text.substr(0, text.size() - 1);
  fuzz::requireOneLine(line);
  return line;
}

void checkKnownNodes(const Event& event) {
  topoctl::KnownNodes once;
  once.apply(event);
  topoctl::KnownNodes twice;
  twice.apply(event);
  twice.apply(event);
  require(once.size() == twice.size(), "an event that is applied twice gives other nodes");
  topoctl::KnownNodes read;
  topoctl::resync(once, read, std::deque<Event>{event});
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const std::unique_ptr<orb::Orb> orb = orb::startClient({});
  const auto received = fuzz::decodeEvent(data, size);
  if (!received) {
    return 0;
  }
  const Event event = topoctl::decode(*received);
  fuzz::requirePrintable(lineOf(event, Format::kTable));
  const std::string json = lineOf(event, Format::kJson);
  require(nlohmann::json::accept(json), "a line is not JSON");
  topoctl::parseId(event.notificationId);
  checkKnownNodes(event);
  return 0;
}
