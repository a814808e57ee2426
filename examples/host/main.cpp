// A host that is operated by lines on standard input: see docs/embedding.md.
#include <iostream>
#include <map>
#include <stdexcept>
#include "Host.h"
#include "host_defaults/RunningOrb.h"
#include "idl/ObjectKeys.h"
#include "orb/hostorb.h"

host_defaults::Module host::module(host::drainEvents);

namespace {

struct SampleHost {
  SampleHost(int argc, char** argv)
      : orb(orb::startHostOrb(argc, argv, "127.0.0.1:0")),
        file(argc > 1 ? argv[1]
                      : throw std::runtime_error("usage: sample-host MODULE [CONSUMER]")) {
    if (argc > 2) setConsumer(argv[2]);
    host::publishDomain();
    host::publishNaming();
    host::publishSecurity();
  }
  ~SampleHost() {  // a failure of unload() ends the process, because the module uses the host
    host::module.unload();
    host::setConsumer(CORBA::Object::_nil());
  }
  void setConsumer(const char* reference) try {
    host::setConsumer(CORBA::Object_var(orb.get()->string_to_object(reference)).in());
  } catch (const CORBA::SystemException&) {
    throw std::runtime_error("the consumer is no reference");
  }
  std::string load() {
    host::module.load(file, orb.rootPoa());
    const CORBA::Object_var manager = host::module.reference(object_key::kManager);
    return CORBA::String_var(orb.get()->object_to_string(manager.in())).in();
  }
  std::string answer(const std::string& line) {
    static const std::map<std::string, void (*)(const std::string&)> changes = {
        {"create", host::createNode}, {"change", host::changeNode}, {"delete", host::deleteNode}};
    const std::string verb = line.substr(0, line.find(' '));
    if (changes.count(verb) == 0 && verb != line) return "failed unknown request";
    if (verb == "load") return "ok " + load();
    if (verb == "unload" || verb == "quit") {
      host::module.unload();
      return "ok";
    }
    if (changes.count(verb) == 0) return "failed unknown request";
    changes.at(verb)(line.substr(std::min(verb.size() + 1, line.size())));
    host::drainEvents();
    return "ok";
  }
  host_defaults::RunningOrb orb;
  const std::string file;
};

}  // namespace

int main(int argc, char** argv) try {
  SampleHost host(argc, argv);
  std::cout << "ready " + host.load() << std::endl;
  for (std::string line; line != "quit" && std::getline(std::cin, line);) {
    try {
      std::cout << host.answer(line) << std::endl;
    } catch (const std::runtime_error& failure) {
      std::cout << "failed " << failure.what() << std::endl;
    }
  }
} catch (const std::exception& failure) {
  std::cerr << failure.what() << std::endl;
  return 1;
} catch (const CORBA::Exception& failure) {
  std::cerr << failure._name() << std::endl;
  return 1;
}
