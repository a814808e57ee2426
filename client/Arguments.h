// What commands are given beside the options that all of them have.

#ifndef CLIENT_ARGUMENTS_H
#define CLIENT_ARGUMENTS_H

#include <string>
#include <vector>

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
};

struct Arguments {
  std::vector<TypedPair> object;  // the end of its name, or the whole of it
  bool isWholeName = false;  // otherwise the name starts with the EMS, which is to be found out
  std::string attribute;     // one of attributes()
  std::string value;         // for an attribute that is a text
  TypedPair pair;            // for an attribute that is pairs
  bool unique = false;
};

// Makes the subcommand understand these arguments.
void addArguments(CLI::App& command, Takes takes);

// The arguments of a subcommand that has been parsed. Throws Failure (kUsage).
Arguments readArguments(const CLI::App& command, Takes takes);

}  // namespace topoctl

#endif
