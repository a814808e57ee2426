#include "agent/formats/GraphmlNetwork.h"

#include <cstring>
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
      throw ParseError(linePlace(text, at), "holds a NUL character");
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
    throw ParseError(place, inQuotes(text) + " is no usable number of degrees");
  }
  return *thousandths;
}

std::string elementId(std::size_t number) {
  return "NE=" + std::to_string(number);
}

// Reads all nodes before the edges, because an edge may refer to any node.
class GraphReader {
 public:
  GraphReader(pugi::xml_node root, const std::string& baseName, std::size_t fileBytes,
              const Cancellation& cancellation)
      : cancellation_(cancellation),
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

  Network read() {
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
    return std::move(network_);
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
    }
    return id;
  }

  void addNode(pugi::xml_node node) {
    cancellation_.throwIfRequested();
    const std::size_t number = elements_.size() + 1;
    const std::string place = "node[" + std::to_string(elements_.size()) + ']';
    if (node.child("graph")) {
      throw ParseError(place, "has a graph of its own, which is not supported");
    }
    requireNewId(node, place, number);

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

  void requireNewId(pugi::xml_node node, const std::string& place, std::size_t number) {
    const pugi::xml_attribute id = node.attribute("id");
    if (!id) {
      throw ParseError(place + ".id", "is missing");
    }
    const auto [known, isNew] = numbers_.emplace(id.value(), number);
    if (!isNew) {
      throw ParseError(place + ".id", inQuotes(id.value()) + " is already that of node[" +
                                          std::to_string(known->second - 1) + ']');
    }
  }

  // Adds the network element and the clock position of a node.
  void addRecords(std::size_t number, const std::string& label) {
    network_.networkElements.push_back({static_cast<std::int32_t>(number), label, true});
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
    const std::string& sourceName = elements_[source - 1].nativeName;
    const std::string& targetName = elements_[target - 1].nativeName;
    texts_.take(sourceName.size() + targetName.size(), place);
    link.linkId = 'e' + index;
    link.nativeName = (type.empty() ? "link" : type) + '/' + sourceName + '-' + targetName;
    link.aEndReference = elementId(source);
    link.zEndReference = elementId(target);
  }

  // The number of the element at one end of an edge.
  std::size_t endOf(pugi::xml_node edge, const char* end, const std::string& place) const {
    const pugi::xml_attribute id = edge.attribute(end);
    if (!id) {
      throw ParseError(place + '.' + end, "is missing");
    }
    const auto found = numbers_.find(id.value());
    if (found == numbers_.end()) {
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
  salted::Map<std::string, std::size_t> numbers_;    // id in the file, element number
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
    throw ParseError("graphml", "must hold one graph, not " + std::to_string(count));
  }
  return root;
}

}  // namespace

Network readGraphmlNetwork(std::string_view text, const std::string& baseName,
                           const Cancellation& cancellation) {
  pugi::xml_document document;
  parse(document, text);
  return GraphReader(rootOf(document), baseName, text.size(), cancellation).read();
}

}  // namespace agent
