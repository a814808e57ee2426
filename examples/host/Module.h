// Loads the module through the ACE Service Configurator.

#ifndef MODULE_H
#define MODULE_H

#include <string>
#include <utility>

#include "Host.h"

namespace host {

// REQUIRES: the interfaces are published. One thread at a time, never a thread of the ORB.
class Module {
 public:
  Module(std::string file, Orb& orb);
  ~Module() { unload(); }
  Module(const Module&) = delete;
  Module& operator=(const Module&) = delete;

  void load();    // throws std::runtime_error; nothing is loaded then
  void unload();  // does nothing when nothing is loaded

 private:
  void forget();

  const std::string file_;
  Orb& orb_;
};

}  // namespace host

#endif
