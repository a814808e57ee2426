// A change of the network together with its prepared effect on the tables of the model. Applying a
// prepared effect cannot fail. Part of the model.

#ifndef AGENT_MODEL_PREPAREDCHANGE_H
#define AGENT_MODEL_PREPAREDCHANGE_H

#include <list>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "agent/model/NetworkTables.h"
#include "agent/network/NetworkChange.h"

namespace agent {

// The pointers in an effect borrow from the tables that prepared the effect.

struct AdditionEffect {
  NetworkTables tables;                         // of the added records
  std::vector<NetworkTables::Element*> marked;  // elements that get the mark
};

struct RemovalEffect {
  std::vector<NetworkTables::Node*> doomed;
  std::vector<NetworkTables::Element*> unmarked;  // elements that lose their mark
  std::vector<ObjectKey> labels;                  // objects that lose their label
  std::list<NetworkTables::Node> removed;         // the removed nodes, freed outside the lock
};

struct ReplacementEffect {
  NetworkTables tables;  // the new tables, later the old tables, which are freed outside the lock
};

struct RecordRemovalEffect {
  std::variant<std::list<NetworkTables::Element>::iterator,
               std::list<NetworkTables::Position>::iterator,
               std::list<NetworkTables::Link>::iterator>
      record;
  std::vector<ObjectKey> labels;  // objects that lose their label
};

struct NodeUpdate {
  NetworkTables::Node* node;
  NS_DOMAIN::TopoNode_T record;  // the new content
  NetworkTables::Node* parent;   // the new parent
  NetworkTables::Node* before;   // the sibling before the node, null for the first one
};

struct ElementUpdate {
  NetworkTables::Element* place;
  NetworkElement record;
};

struct PositionUpdate {
  NS_DOMAIN::ClockPositionInfo_T* place;
  NS_DOMAIN::ClockPositionInfo_T record;
};

struct LinkUpdate {
  NetworkTables::Link* place;
  NetworkTables::Link record;
};

struct RenamingEffect {
  std::vector<std::pair<std::string*, std::string>> names;  // each place and its new content
};

struct LabelEffect {
  ObjectKey key;
  Labels label;  // one label, or none to remove the label of the object
};

// Valid until another change is applied.
struct PreparedChange {
  NetworkChange change;
  // std::monostate: the model does not show this kind of change.
  std::variant<std::monostate, AdditionEffect, RemovalEffect, ReplacementEffect, RenamingEffect,
               RecordRemovalEffect, NodeUpdate, ElementUpdate, PositionUpdate, LinkUpdate,
               LabelEffect>
      effect;
};

}  // namespace agent

#endif
