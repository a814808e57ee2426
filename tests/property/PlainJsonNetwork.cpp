#include "tests/property/PlainJsonNetwork.h"

#include <nlohmann/json.hpp>
#include <set>
#include <utility>

#include "agent/base/PrintableText.h"
#include "agent/formats/ParseError.h"
#include "tests/property/PlainJsonField.h"

namespace plain {
namespace {

using agent::inQuotes;
using agent::Network;
using agent::ParseError;

using Json = nlohmann::json;

constexpr std::string_view kFormat = "topo-network/1";
constexpr const char* kTopLevel = "top level";

// Deeper than any field of the format, and small enough that recursion over a value cannot exhaust
// the stack.
constexpr std::size_t kMostNesting = 8;

std::vector<std::pair<std::string, std::string>> attributesOf(const JsonField& list) {
  std::vector<std::pair<std::string, std::string>> attributes;
  for (std::size_t i = 0; i < list.size(); ++i) {
    const JsonField pair = list.entry(i);
    pair.isListOf(2);
    std::string value = pair.entry(1).text();
    attributes.emplace_back(pair.entry(0).text(), std::move(value));
  }
  return attributes;
}

// Reads a list of two numbers. A missing list changes nothing.
void readPair(const JsonField& list, std::int32_t& first, std::int32_t& second) {
  if (list.isListOf(2)) {
    first = list.entry(0).int32();
    second = list.entry(1).int32();
  }
}

std::string nonEmptyText(const JsonField& field) {
  std::string text = field.required().text();
  if (text.empty()) {
    field.fail("must not be empty");
  }
  return text;
}

void readTopoNode(const JsonField& field, Network& network) {
  NS_DOMAIN::TopoNode_T& node = network.topoNodes.emplace_back();
  node.nodeId = nonEmptyText(field.member("id"));
  node.parentId = field.member("parent").text();
  node.nativeName = field.member("name").text();
  node.nodeType = field.member("type").uint32(NS_DOMAIN::kTopoSubnetwork);
  node.parentType = field.member("parentType").uint32(NS_DOMAIN::kTopoSubnetwork);
  readPair(field.member("params"), node.attribute3, node.attribute4);
  node.extendedAttributes = attributesOf(field.member("attributes"));
}

void readNetworkElement(const JsonField& field, Network& network) {
  agent::NetworkElement& element = network.networkElements.emplace_back();
  element.number = field.member("number").required().int32();
  element.name = field.member("name").text();
  element.shown = field.member("shown").flag();
  element.shownForNode = field.member("shownForNode").flag();
  element.shown = element.shown || element.shownForNode;
}

void readClockPosition(const JsonField& field, Network& network) {
  NS_DOMAIN::ClockPositionInfo_T& position = network.clockPositions.emplace_back();
  position.reference = field.member("reference").required().text();
  position.label = field.member("label").text();
  readPair(field.member("values"), position.value1, position.value2);
}

void readClockLink(const JsonField& field, Network& network) {
  NS_DOMAIN::ClockTopoLinkInfo_T& link = network.clockLinks.emplace_back();
  link.linkId = field.member("id").required().text();
  link.nativeName = field.member("name").text();
  link.aEndReference = field.member("a").text();
  link.zEndReference = field.member("z").text();
}

void readObjectLabel(const JsonField& field, Network& network) {
  agent::ObjectLabel& label = network.objectLabels.emplace_back();
  label.type = field.member("type").int32();
  label.id = field.member("id").required().text();
  label.label = field.member("label").text();
}

void readObjectAttributes(const JsonField& field, Network& network) {
  agent::ObjectAttributes& object = network.objectAttributes.value().emplace_back();
  object.type = field.member("type").int32();
  object.id = field.member("id").required().text();
  object.owner = field.member("owner").text();
  object.info = attributesOf(field.member("info"));
}

// A list of the format: the name, the fields of an entry, and the reader of an entry.
struct ListRule {
  std::string name;
  std::vector<std::string> fields;
  void (*read)(const JsonField& entry, Network& network);
};

const std::vector<ListRule>& listRules() {
  static const std::vector<ListRule> rules = {
      {"topoNodes",
       {"id", "parent", "name", "type", "parentType", "params", "attributes"},
       readTopoNode},
      {"networkElements", {"number", "name", "shown", "shownForNode"}, readNetworkElement},
      {"clockPositions", {"reference", "label", "values"}, readClockPosition},
      {"clockLinks", {"id", "name", "a", "z"}, readClockLink},
      {"objectLabels", {"type", "id", "label"}, readObjectLabel},
      {"objectAttributes", {"type", "id", "owner", "info"}, readObjectAttributes},
  };
  return rules;
}

const ListRule* ruleOf(const std::string& list) {
  for (const ListRule& rule : listRules()) {
    if (rule.name == list) {
      return &rule;
    }
  }
  return nullptr;
}

// The parser's reason without the error number and the place.
std::string reasonOf(const Json::exception& error) {
  std::string reason = error.what();
  reason.erase(0, reason.find("] ") + 2);
  if (reason.rfind("parse error at ", 0) == 0) {
    reason.erase(0, reason.find(": ") + 2);
  }
  return reason;
}

// Builds the network while the parser reports values.
class NetworkEvents final : public nlohmann::json_sax<Json> {
 public:
  explicit NetworkEvents(std::string_view text) : text_(text) {}

  Network take() {
    if (!hasFormat_) {
      throw ParseError("format", "is missing");
    }
    return std::move(network_);
  }

  bool null() override { return add(nullptr); }
  bool boolean(bool value) override { return add(value); }
  bool number_integer(number_integer_t value) override { return add(value); }
  bool number_unsigned(number_unsigned_t value) override { return add(value); }
  bool number_float(number_float_t value, const string_t&) override { return add(value); }
  bool string(string_t& value) override { return add(value); }  // the parser reuses the memory
  bool binary(binary_t& value) override { return add(std::move(value)); }

  bool start_object(std::size_t) override {
    if (!inRoot_) {
      inRoot_ = true;
      return true;
    }
    return open(Json::object());
  }

  bool key(string_t& name) override {
    if (open_.empty()) {
      requireNewTopField(name);
      return true;
    }
    const auto [member, isNew] = open_.back()->emplace(name, nullptr);
    if (!isNew) {
      throw ParseError(place().path(), "has the field " + inQuotes(name) + " twice");
    }
    member_ = &*member;
    return true;
  }

  bool end_object() override { return open_.empty() || close(); }

  bool start_array(std::size_t) override {
    const bool isList = inRoot_ && open_.empty() && !inList_ && rule_ != nullptr;
    if (!isList) {
      return open(Json::array());
    }
    inList_ = true;
    index_ = 0;
    return true;
  }

  bool end_array() override {
    if (!open_.empty()) {
      return close();
    }
    inList_ = false;
    return true;
  }

  bool parse_error(std::size_t bytesRead, const std::string&,
                   const nlohmann::detail::exception& error) override {
    throw ParseError(agent::linePlace(text_, bytesRead == 0 ? 0 : bytesRead - 1), reasonOf(error));
  }

 private:
  void requireNewTopField(const std::string& name) {
    if (name != "format" && name != "ems" && ruleOf(name) == nullptr) {
      throw ParseError(kTopLevel, "has the unknown field " + inQuotes(name));
    }
    if (!topFieldsSeen_.insert(name).second) {
      throw ParseError(kTopLevel, "has the field " + inQuotes(name) + " twice");
    }
    if (name == "objectAttributes") {
      network_.objectAttributes.emplace();
    }
    topField_ = name;
    topPlace_ = JsonField(nullptr, topField_, &value_);
    rule_ = ruleOf(topField_);
  }

  // The place of the value that is being parsed: an entry of a list or a top-level field.
  JsonField place() const { return inList_ ? JsonField(&topPlace_, index_, &value_) : topPlace_; }

  bool add(Json value) {
    put(std::move(value));
    if (open_.empty()) {
      deliver();
    }
    return true;
  }

  bool open(Json container) {
    if (open_.size() == kMostNesting) {
      place().fail("is nested too deeply");
    }
    open_.push_back(put(std::move(container)));
    return true;
  }

  bool close() {
    open_.pop_back();
    if (open_.empty()) {
      deliver();
    }
    return true;
  }

  // Adds a value to the innermost open container. The returned pointer is valid until that
  // container is closed, because only the innermost container grows.
  Json* put(Json value) {
    if (!inRoot_) {
      JsonField(nullptr, kTopLevel, &value).requireFieldsAmong({});
    }
    if (open_.empty()) {
      value_ = std::move(value);
      return &value_;
    }
    Json& container = *open_.back();
    if (container.is_object()) {
      *member_ = std::move(value);
      return member_;
    }
    container.push_back(std::move(value));
    return &container.back();
  }

  void deliver() {
    const JsonField field = place();
    if (inList_) {
      field.requireFieldsAmong(rule_->fields);
      rule_->read(field, network_);
      ++index_;
    } else {
      deliverTopField(field);
    }
  }

  void deliverTopField(const JsonField& field) {
    if (topField_ == "ems") {
      network_.ems = field.text();
    } else if (topField_ == "format") {
      requireFormat(field);
    } else {
      static_cast<void>(field.size());  // fails: lists are delivered by entries
    }
  }

  void requireFormat(const JsonField& field) {
    const std::string format = field.text();
    if (format != kFormat) {
      field.fail("must be " + inQuotes(kFormat) + ", not " + inQuotes(format));
    }
    hasFormat_ = true;
  }

  const std::string_view text_;
  Network network_;
  bool hasFormat_ = false;

  bool inRoot_ = false;
  bool inList_ = false;    // in the list that topField_ names
  std::size_t index_ = 0;  // of the entry in that list
  std::string topField_;
  std::set<std::string> topFieldsSeen_;
  JsonField topPlace_{nullptr, kTopLevel, nullptr};
  const ListRule* rule_ = nullptr;  // of topField_; null for a field that is no list

  Json value_;               // the value that is being parsed
  std::vector<Json*> open_;  // open containers in value_, outermost first
  Json* member_ = nullptr;   // the next value in the innermost object
};

}  // namespace

Network readJsonNetwork(std::string_view text) {
  NetworkEvents events(text);
  Json::sax_parse(text.begin(), text.end(), &events);
  return events.take();
}

}  // namespace plain
