// What commands are given beside the options that all of them have.

#ifndef CLIENT_COMMANDLINE_ARGUMENTS_H
#define CLIENT_COMMANDLINE_ARGUMENTS_H

#include <cstdint>
#include <string>
#include <vector>

#include "orb/orb.h"

namespace CLI {
class App;
}

namespace topoctl {

// A name and a value as typed, without any check.
struct TypedPair {
  std::string name;
  std::string value;
};

// Which arguments a command takes.
enum class Takes {
  kNothing,
  kSubnetwork,  // ID, or the whole name
  kAttribute,   // ATTRIBUTE OBJECT VALUE, with the whole name in the place of OBJECT if given
  kNewNode,     // ID and the options of a new node
  kNode,        // ID
  kNewName,     // ID NAME
  kFile,        // FILE
  kNewFile,     // FILE
  kSwitch,      // on or off
  kWatch,       // options alone
};

// A topology node as typed for the console.
struct TypedNode {
  std::string id;
  std::string parent;  // empty: none
  bool parentIsElement = false;
  std::string name;
  bool isElement = false;
  std::int32_t param1 = 0;
  std::int32_t param2 = 0;
  std::vector<TypedPair> attributes;  // in order, names may repeat
};

struct Arguments {
  std::vector<TypedPair> object;  // the end of its name, or the whole of it
  bool isWholeName = false;  // otherwise the name starts with the EMS, which is to be found out
  std::string attribute;     // one of attributes()
  std::string value;         // for an attribute that is a text
  TypedPair pair;            // for an attribute that is pairs
  bool unique = false;

  TypedNode node;    // of other commands than creation the ID, and the new name
  std::string file;  // its path
  bool on = false;

  orb::Endpoint listen{"127.0.0.1", 0};  // where notifications are received
  std::uint32_t count = 0;               // how many are printed; 0: no limit
};

// Makes the subcommand understand these arguments.
void addArguments(CLI::App& command, Takes takes);

// The arguments of a subcommand that has been parsed. Throws Failure (kUsage).
Arguments readArguments(const CLI::App& command, Takes takes);

}  // namespace topoctl

#endif
