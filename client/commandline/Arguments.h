// The arguments of a command, as typed and checked for their form.

#ifndef CLIENT_COMMANDLINE_ARGUMENTS_H
#define CLIENT_COMMANDLINE_ARGUMENTS_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace topoctl {

// A name and a value as typed, unchecked.
struct TypedPair {
  std::string name;
  std::string value;
};

struct TypedNumbers {
  std::int32_t first = 0;
  std::int32_t second = 0;
};

// The kind of a topology node. kOfParent, for the kind of a parent only: the agent takes the kind
// from the parent.
enum class NodeKind { kSubnetwork, kElement, kOfParent };

// A topology node as typed for the console.
struct TypedNode {
  std::string id;
  std::string parent;  // an ID; empty: no parent
  NodeKind parentKind = NodeKind::kOfParent;
  std::string name;
  NodeKind kind = NodeKind::kSubnetwork;
  TypedNumbers params;
  std::vector<TypedPair> attributes;  // in order, names may repeat
};

// A record of the network as typed for the console. An empty field was not typed.
struct TypedRecord {
  std::string id;           // of a node, clock link or object; the reference of a clock position
  std::int32_t number = 0;  // of an element; the type of an object
  std::optional<std::string> name;  // or the label
  std::optional<TypedNumbers> numbers;
  std::optional<std::vector<TypedPair>> attributes;
  std::optional<std::string> aEnd;
  std::optional<std::string> zEnd;
};

// The attributes that `set` sets.
enum class Attribute { kUserLabel, kOwner, kNativeName, kInfo };

struct ListenAddress {
  std::string host = "127.0.0.1";
  std::uint16_t port = 0;  // 0: any free port
};

// A command fills the members that its row of the syntax reads.
struct Arguments {
  // below, set
  std::vector<TypedPair> object;  // the name of an object, without the EMS unless isWholeName
  bool isWholeName = false;

  // set
  Attribute attribute = Attribute::kUserLabel;
  std::string value;    // of an attribute that is a text
  TypedPair pair;       // of kInfo
  bool unique = false;  // the agent shall refuse a user label that another object has

  // node create; the other commands of the group node use some of the fields
  TypedNode node;

  // node change, and the commands of the groups element, clock-position, clock-link and label
  TypedRecord record;

  // import, backup
  std::string file;  // path

  // import
  bool replace = false;
  bool dryRun = false;
  std::int32_t firstElement = 0;  // 0: as in the file

  // test-switch; element create: shown
  bool on = false;

  // completion
  std::string shell;  // bash or zsh

  // watch
  ListenAddress listen;     // where notifications are received
  std::uint32_t count = 0;  // notifications to print before the end; 0: no limit
};

}  // namespace topoctl

#endif
