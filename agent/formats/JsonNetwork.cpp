#include "agent/formats/JsonNetwork.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <set>
#include <utility>

#include "agent/base/PrintableText.h"
#include "agent/formats/JsonTarget.h"
#include "agent/formats/JsonValueReader.h"
#include "agent/formats/ParseError.h"

namespace agent {
namespace {

using Json = nlohmann::json;

constexpr std::string_view kFormat = "topo-network/1";
constexpr const char* kObjectAttributes = "objectAttributes";
constexpr const char* kTopLevel = "top level";

JsonTargets addTopoNode(Network& network) {
  NS_DOMAIN::TopoNode_T& node = network.topoNodes.emplace_back();
  node.nodeType = NS_DOMAIN::kTopoSubnetwork;
  node.parentType = NS_DOMAIN::kTopoSubnetwork;
  return {JsonNonEmptyText{&node.nodeId},
          &node.parentId,
          &node.nativeName,
          &node.nodeType,
          &node.parentType,
          JsonNumberPair{&node.attribute3, &node.attribute4},
          &node.extendedAttributes};
}

JsonTargets addNetworkElement(Network& network) {
  NetworkElement& element = network.networkElements.emplace_back();
  return {&element.number, &element.name, &element.shown, &element.shownForNode};
}

JsonTargets addClockPosition(Network& network) {
  NS_DOMAIN::ClockPositionInfo_T& position = network.clockPositions.emplace_back();
  return {&position.reference, &position.label, JsonNumberPair{&position.value1, &position.value2}};
}

JsonTargets addClockLink(Network& network) {
  NS_DOMAIN::ClockTopoLinkInfo_T& link = network.clockLinks.emplace_back();
  return {&link.linkId, &link.nativeName, &link.aEndReference, &link.zEndReference};
}

JsonTargets addObjectLabel(Network& network) {
  ObjectLabel& label = network.objectLabels.emplace_back();
  return {&label.type, &label.id, &label.label};
}

// REQUIRES: the network has the list.
JsonTargets addObjectAttributes(Network& network) {
  ObjectAttributes& object = network.objectAttributes.value().emplace_back();
  return {&object.type, &object.id, &object.owner, &object.info};
}

// A list of the format: the name, the fields of an entry, and the function that adds an entry with
// default values and returns the targets of the fields.
struct ListRule {
  std::string name;
  std::vector<JsonFieldRule> fields;
  JsonTargets (*add)(Network& network);
};

const std::vector<ListRule>& listRules() {
  constexpr bool kRequired = true;
  static const std::vector<ListRule> rules = {
      {"topoNodes",
       {{"id", kRequired},
        {"parent"},
        {"name"},
        {"type"},
        {"parentType"},
        {"params"},
        {"attributes"}},
       addTopoNode},
      {"networkElements",
       {{"number", kRequired}, {"name"}, {"shown"}, {"shownForNode"}},
       addNetworkElement},
      {"clockPositions", {{"reference", kRequired}, {"label"}, {"values"}}, addClockPosition},
      {"clockLinks", {{"id", kRequired}, {"name"}, {"a"}, {"z"}}, addClockLink},
      {"objectLabels", {{"type"}, {"id", kRequired}, {"label"}}, addObjectLabel},
      {kObjectAttributes, {{"type"}, {"id", kRequired}, {"owner"}, {"info"}}, addObjectAttributes},
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

// Fills the records of a network while the parser reports values.
class NetworkEvents final : public nlohmann::json_sax<Json> {
 public:
  NetworkEvents(std::string_view text, const Cancellation& cancellation)
      : text_(text), cancellation_(cancellation) {}

  Network take() {
    if (!hasFormat_) {
      throw ParseError("format", "is missing");
    }
    for (NetworkElement& element : network_.networkElements) {
      element.shown = element.shown || element.shownForNode;
    }
    return std::move(network_);
  }

  bool null() override { return add(nullptr); }
  bool boolean(bool value) override { return add(value); }
  bool number_integer(number_integer_t value) override { return add(value); }
  bool number_unsigned(number_unsigned_t value) override { return add(value); }
  bool number_float(number_float_t value, const string_t&) override { return add(value); }
  bool string(string_t& value) override { return add(std::string_view(value)); }
  bool binary(binary_t&) override { return false; }  // not part of a text

  bool start_object(std::size_t) override {
    if (!inRoot_) {
      inRoot_ = true;
    } else if (inList_ && !value_.isOpen()) {
      value_.openRecord(list_->fields, list_->add(network_));
    } else {
      value_.open(JsonContainer::kObject);
    }
    return true;
  }

  bool key(string_t& name) override {
    if (value_.isOpen()) {
      value_.key(name);
    } else {
      startTopField(name);
    }
    return true;
  }

  bool end_object() override { return !value_.isOpen() || close(); }

  bool start_array(std::size_t) override {
    if (!inRoot_) {
      failRoot(refusalOf(JsonRecord(), JsonContainer::kList));
    }
    if (value_.isOpen() || inList_ || list_ == nullptr) {
      value_.open(JsonContainer::kList);
      return true;
    }
    inList_ = true;
    index_ = 0;
    value_.startEntry(topField_, index_);
    return true;
  }

  bool end_array() override {
    if (value_.isOpen()) {
      return close();
    }
    inList_ = false;
    return true;
  }

  bool parse_error(std::size_t bytesRead, const std::string&,
                   const nlohmann::detail::exception& error) override {
    throw ParseError(linePlace(text_, bytesRead == 0 ? 0 : bytesRead - 1), reasonOf(error));
  }

 private:
  [[noreturn]] static void failRoot(const std::string& reason) {
    throw ParseError(kTopLevel, reason);
  }

  void startTopField(const std::string& name) {
    const auto& known = jsonNetworkFields().at("");
    if (std::find(known.begin(), known.end(), name) == known.end()) {
      failRoot("has the unknown field " + inQuotes(name));
    }
    if (!topFieldsSeen_.insert(name).second) {
      failRoot("has the field " + inQuotes(name) + " twice");
    }
    if (name == kObjectAttributes) {
      network_.objectAttributes.emplace();  // an empty list has a meaning
    }
    topField_ = name;
    list_ = ruleOf(name);
    value_.start(topField_, topTarget());
  }

  JsonTarget topTarget() {
    if (list_ != nullptr) {
      return JsonRecordList();
    }
    return topField_ == "ems" ? &network_.ems : &format_;
  }

  bool add(const JsonScalar& value) {
    if (!inRoot_) {
      failRoot(assign(JsonRecord(), value));
    }
    value_.scalar(value);
    if (!value_.isOpen()) {
      finishValue();
    }
    return true;
  }

  bool close() {
    value_.close();
    if (!value_.isOpen()) {
      finishValue();
    }
    return true;
  }

  void finishValue() {
    cancellation_.throwIfRequested();
    value_.check();
    if (inList_) {
      value_.startEntry(topField_, ++index_);
    } else {
      requireFormat();
    }
  }

  void requireFormat() {
    if (topField_ != "format") {
      return;
    }
    if (format_ != kFormat) {
      value_.fail("must be " + inQuotes(kFormat) + ", not " + inQuotes(format_));
    }
    hasFormat_ = true;
  }

  const std::string_view text_;
  const Cancellation& cancellation_;
  Network network_;
  std::string format_;
  bool hasFormat_ = false;

  bool inRoot_ = false;
  bool inList_ = false;    // in the list that topField_ names
  std::size_t index_ = 0;  // of the entry in that list
  std::string topField_;
  std::set<std::string> topFieldsSeen_;
  const ListRule* list_ = nullptr;  // of topField_; null for a field that is no list
  JsonValueReader value_;           // the entry or the field that is being parsed
};

}  // namespace

Network readJsonNetwork(std::string_view text, const Cancellation& cancellation) {
  NetworkEvents events(text, cancellation);
  Json::sax_parse(text.begin(), text.end(), &events);
  return events.take();
}

const std::map<std::string, std::vector<std::string>>& jsonNetworkFields() {
  static const auto fields = [] {
    std::map<std::string, std::vector<std::string>> all;
    all[""] = {"format", "ems"};
    for (const ListRule& rule : listRules()) {
      all[""].push_back(rule.name);
      for (const JsonFieldRule& field : rule.fields) {
        all[rule.name].emplace_back(field.name);
      }
    }
    return all;
  }();
  return fields;
}

}  // namespace agent
