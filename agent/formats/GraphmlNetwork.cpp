#include "agent/formats/GraphmlNetwork.h"

#include <cstring>
#include <limits>
#include <pugixml.hpp>
#include <utility>
#include <vector>

#include "agent/base/PrintableText.h"
#include "agent/base/TextChecks.h"
#include "agent/formats/Decimal.h"
#include "agent/formats/ParseError.h"
#include "hash/SaltedHash.h"

namespace agent {
namespace {

constexpr std::string_view kBlanks = " \t\r\n";

// pugixml ends a text silently at a reference to NUL.
void rejectNulReferences(std::string_view text) {
  for (std::size_t at = text.find("&#"); at != std::string_view::npos;
       at = text.find("&#", at + 2)) {
    std::size_t digits = at + 2;
    if (digits < text.size() && text[digits] == 'x') {
      ++digits;
    }
    const std::size_t end = text.find_first_not_of('0', digits);
    if (end != std::string_view::npos && end > digits && text[end] == ';') {
      throw ParseError(linePlace(text, at), "contains a NUL character");
    }
  }
}

void parse(pugi::xml_document& document, std::string_view text) {
  rejectNulReferences(text);
  const auto result =
      document.load_buffer(text.data(), text.size(), pugi::parse_default, pugi::encoding_utf8);
  if (!result) {
    throw ParseError(linePlace(text, static_cast<std::size_t>(result.offset)),
                     result.description());
  }
}

// Fails for a text that is not UTF-8: a character reference can produce such bytes in a valid file.
std::string checked(std::string text, const std::string& place) {
  if (findInvalidUtf8(text)) {
    throw ParseError(place, "is not UTF-8");
  }
  return text;
}

// A kind of data: the declared keys, which borrow the texts of the document, and the default value.
struct DataKey {
  std::string name;
  salted::Set<std::string_view> keys;
  std::string fallback;
};

std::string contentOf(pugi::xml_node element) {
  std::string content;
  for (const pugi::xml_node part : element) {
    if (part.type() == pugi::node_pcdata || part.type() == pugi::node_cdata) {
      content += part.value();
    }
  }
  return content;
}

DataKey dataKey(pugi::xml_node root, const std::string& domain, const std::string& name) {
  DataKey found{name, {}, {}};
  for (const pugi::xml_node key : root.children("key")) {
    const std::string keyDomain = key.attribute("for").as_string("all");
    if ((keyDomain == domain || keyDomain == "all") && key.attribute("attr.name").value() == name) {
      found.keys.emplace(key.attribute("id").value());
      found.fallback = contentOf(key.child("default"));
    }
  }
  return found;
}

// The first data of one kind in an element, or the default.
std::string dataOf(pugi::xml_node element, const DataKey& wanted) {
  for (const pugi::xml_node data : element.children("data")) {
    if (wanted.keys.count(data.attribute("key").value()) != 0) {
      return contentOf(data);
    }
  }
  return wanted.fallback;
}

// Limits the texts of a network to a multiple of the file size. A default value, the label of the
// graph and the label of a node occur once in the file but any number of times in the network.
class TextBudget {
 public:
  explicit TextBudget(std::size_t fileBytes) : left_(kSpareBytes + kMostRepetition * fileBytes) {}

  void take(std::size_t bytes, const std::string& place) {
    if (bytes > left_) {
      throw ParseError(place, "repeats texts until they have more than " +
                                  std::to_string(kMostRepetition) + " times the size of the file");
    }
    left_ -= bytes;
  }

 private:
  static constexpr std::size_t kMostRepetition = 32;
  static constexpr std::size_t kSpareBytes = std::size_t{1} << 20;

  std::size_t left_;
};

std::string_view trimmed(std::string_view text) {
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) {
    return {};
  }
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

// Thousandths of decimal degrees; 0 for no text.
std::int32_t degrees(const std::string& text, const std::string& place) {
  const std::string_view decimal = trimmed(text);
  if (decimal.empty()) {
    return 0;
  }
  const auto thousandths = thousandthsOf(decimal);
  if (!thousandths) {
    throw ParseError(place, inQuotes(text) + " is not a number of degrees within the limits");
  }
  return *thousandths;
}

std::string elementId(std::int32_t number) {
  return "NE=" + std::to_string(number);
}

// Reads all nodes before the edges, because an edge may refer to any node.
class GraphReader {
 public:
  GraphReader(pugi::xml_node root, const std::string& baseName, std::size_t fileBytes,
              std::optional<GraphmlNumbering> numbering, const Cancellation& cancellation)
      : cancellation_(cancellation),
        numbering_(numbering),
        texts_(fileBytes),
        graph_(root.child("graph")),
        graphLabel_(dataKey(root, "graph", "label")),
        nodeLabel_(dataKey(root, "node", "label")),
        country_(dataKey(root, "node", "Country")),
        longitude_(dataKey(root, "node", "Longitude")),
        latitude_(dataKey(root, "node", "Latitude")),
        linkType_(dataKey(root, "edge", "LinkType")) {
    readGraph(baseName);
  }

  PlacedNetwork read() {
    for (const pugi::xml_node node : graph_.children("node")) {
      addNode(node);
    }
    for (const pugi::xml_node edge : graph_.children("edge")) {
      addEdge(edge);
    }
    requireDistinctGraphId();
    auto& nodes = network_.topoNodes;
    nodes.insert(nodes.end(), std::make_move_iterator(elements_.begin()),
                 std::make_move_iterator(elements_.end()));
    return {std::move(network_), NetworkPlaces::inGraphml(std::move(firstNodes_))};
  }

 private:
  void readGraph(const std::string& baseName) {
    network_.ems = checkedData(graph_, graphLabel_, "graph");
    if (network_.ems.empty()) {
      network_.ems = checked(baseName, "file name");
    }
    if (isRootMarker(network_.ems)) {
      throw ParseError("graph.label", inQuotes(network_.ems) + " cannot be the id of a subnetwork");
    }
    addSubnetwork(network_.ems, network_.ems, NS_DOMAIN::kPhysicalRoot);
  }

  std::string checkedData(pugi::xml_node element, const DataKey& wanted, const std::string& place) {
    std::string text = dataOf(element, wanted);
    texts_.take(text.size(), place);
    return checked(std::move(text), place + '.' + wanted.name);
  }

  void addSubnetwork(const std::string& id, const std::string& name, const std::string& parent) {
    NS_DOMAIN::TopoNode_T& node = network_.topoNodes.emplace_back();
    node.nodeId = id;
    node.parentId = parent;
    node.nativeName = name;
    node.nodeType = NS_DOMAIN::kTopoSubnetwork;
    node.parentType = NS_DOMAIN::kTopoSubnetwork;
  }

  // The id of the subnetwork of a country. Adds the subnetwork at the country's first node.
  std::string subnetworkOf(const std::string& country, const std::string& place) {
    texts_.take(network_.ems.size() + country.size(), place);
    if (country.empty()) {
      return network_.ems;
    }
    std::string id = network_.ems + '/' + country;
    if (const auto [known, isNew] = countries_.emplace(country, id); isNew) {
      addSubnetwork(id, country, network_.ems);
      firstNodes_.push_back(elements_.size() - 1);
    }
    return id;
  }

  void addNode(pugi::xml_node node) {
    cancellation_.throwIfRequested();
    const std::string place = placeOf("node", elements_.size());
    const std::int32_t number = nextNumber(place);
    if (node.child("graph")) {
      throw ParseError(place, "contains another graph, which is not supported");
    }
    requireNewId(node, place);

    NS_DOMAIN::TopoNode_T& element = elements_.emplace_back();
    element.nodeId = elementId(number);
    element.parentId = subnetworkOf(checkedData(node, country_, place), place);
    element.nativeName = checkedData(node, nodeLabel_, place);
    element.nodeType = NS_DOMAIN::kTopoElement;
    element.parentType = NS_DOMAIN::kTopoSubnetwork;
    element.attribute3 = degrees(checkedData(node, longitude_, place), place + ".Longitude");
    element.attribute4 = degrees(checkedData(node, latitude_, place), place + ".Latitude");
    addRecords(number, element.nativeName);
  }

  // The number of the next element.
  std::int32_t nextNumber(const std::string& place) const {
    constexpr std::int64_t kMost = std::numeric_limits<std::int32_t>::max();
    const std::int64_t first = numbering_ ? numbering_->firstElement : 1;
    const std::int64_t number = first + static_cast<std::int64_t>(elements_.size());
    if (number > kMost) {
      throw ParseError(place, "the number of its element would be above " + std::to_string(kMost));
    }
    return static_cast<std::int32_t>(number);
  }

  void requireNewId(pugi::xml_node node, const std::string& place) {
    const pugi::xml_attribute id = node.attribute("id");
    if (!id) {
      throw ParseError(place + ".id", "is missing");
    }
    const auto [known, isNew] = indexes_.emplace(id.value(), elements_.size());
    if (!isNew) {
      throw ParseError(place + ".id", inQuotes(id.value()) + " is already that of " +
                                          placeOf("node", known->second));
    }
  }

  // Adds the network element and the clock position of a node.
  void addRecords(std::int32_t number, const std::string& label) {
    network_.networkElements.push_back({number, label, true});
    NS_DOMAIN::ClockPositionInfo_T& position = network_.clockPositions.emplace_back();
    position.reference = elementId(number);
    position.label = label;
  }

  void addEdge(pugi::xml_node edge) {
    cancellation_.throwIfRequested();
    const std::string index = std::to_string(network_.clockLinks.size());
    const std::string place = "edge[" + index + ']';
    const std::size_t source = endOf(edge, "source", place);
    const std::size_t target = endOf(edge, "target", place);
    const std::string type = checkedData(edge, linkType_, place);

    NS_DOMAIN::ClockTopoLinkInfo_T& link = network_.clockLinks.emplace_back();
    const NS_DOMAIN::TopoNode_T& a = elements_[source];
    const NS_DOMAIN::TopoNode_T& z = elements_[target];
    const std::string prefix = numbering_ ? network_.ems + '/' : "";
    texts_.take(a.nativeName.size() + z.nativeName.size() + prefix.size(), place);
    link.linkId = prefix + 'e' + index;
    link.nativeName = (type.empty() ? "link" : type) + '/' + a.nativeName + '-' + z.nativeName;
    link.aEndReference = a.nodeId;
    link.zEndReference = z.nodeId;
  }

  // The index of the element at one end of an edge.
  std::size_t endOf(pugi::xml_node edge, const char* end, const std::string& place) const {
    const pugi::xml_attribute id = edge.attribute(end);
    if (!id) {
      throw ParseError(place + '.' + end, "is missing");
    }
    const auto found = indexes_.find(id.value());
    if (found == indexes_.end()) {
      throw ParseError(place + '.' + end, inQuotes(id.value()) + " is no node of the graph");
    }
    return found->second;
  }

  void requireDistinctGraphId() const {
    for (const NS_DOMAIN::TopoNode_T& element : elements_) {
      if (element.nodeId == network_.ems) {
        throw ParseError("graph.label", inQuotes(network_.ems) + " is also the id of an element");
      }
    }
  }

  const Cancellation& cancellation_;
  const std::optional<GraphmlNumbering> numbering_;
  TextBudget texts_;

  const pugi::xml_node graph_;
  const DataKey graphLabel_;
  const DataKey nodeLabel_;
  const DataKey country_;
  const DataKey longitude_;
  const DataKey latitude_;
  const DataKey linkType_;

  Network network_;                                  // topoNodes has only subnetworks until read()
  std::vector<NS_DOMAIN::TopoNode_T> elements_;      // appended to the subnetworks by read()
  salted::Map<std::string, std::string> countries_;  // name, subnetwork id
  salted::Map<std::string, std::size_t> indexes_;    // id in the file, index in elements_
  std::vector<std::size_t> firstNodes_;              // of the countries, as indexes in elements_
};

// The root element. Fails unless the root has exactly one graph.
pugi::xml_node rootOf(const pugi::xml_document& document) {
  const pugi::xml_node root = document.document_element();
  if (std::strcmp(root.name(), "graphml") != 0) {
    throw ParseError("root element", "must be graphml, not " + inQuotes(root.name()));
  }
  const auto graphs = root.children("graph");
  const auto count = std::distance(graphs.begin(), graphs.end());
  if (count != 1) {
    throw ParseError("graphml", "must contain one graph, not " + std::to_string(count));
  }
  return root;
}

}  // namespace

PlacedNetwork readGraphmlNetwork(std::string_view text, const std::string& baseName,
                                 std::optional<GraphmlNumbering> numbering,
                                 const Cancellation& cancellation) {
  pugi::xml_document document;
  parse(document, text);
  return GraphReader(rootOf(document), baseName, text.size(), numbering, cancellation).read();
}

}  // namespace agent
