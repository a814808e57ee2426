// A host that is operated by lines on standard input: see docs/embedding.md.
#include <iostream>
#include <map>
#include <stdexcept>
#include <thread>
#include "Host.h"

namespace {

// An ORB that serves requests until the end of this object.
struct RunningOrb {
  RunningOrb(int argc, char** argv) : orb(host::startOrb(argc, argv)) {
    const CORBA::Object_var object = orb->resolve_initial_references("RootPOA");
    root = PortableServer::POA::_narrow(object.in());
    PortableServer::POAManager_var(root->the_POAManager())->activate();
    thread = std::thread([this] { run(); });
  }
  ~RunningOrb() {
    host::unload();
    orb->shutdown(true);
    thread.join();
    host::setConsumer(CORBA::Object::_nil());
    orb->destroy();
  }
  void run() {
    try {
      orb->run();
    } catch (const CORBA::BAD_INV_ORDER&) {
      // The ORB was shut down before the call.
    }
  }
  const CORBA::ORB_var orb;
  PortableServer::POA_var root;
  std::thread thread;
};

std::string load(const char* module, RunningOrb& running) {
  host::load(module, running.root.in());
  return host::managerReference(running.orb.in());
}

std::string answer(const std::string& line, const char* module, RunningOrb& running) {
  static const std::map<std::string, void (*)(const std::string&)> changes = {
      {"create", host::createNode}, {"change", host::changeNode}, {"delete", host::deleteNode}};
  const std::string verb = line.substr(0, line.find(' '));
  if (verb == "load") return "ok " + load(module, running);
  if (verb == "unload" || verb == "quit") {
    host::unload();
    return "ok";
  }
  if (changes.count(verb) == 0) return "failed unknown request";
  changes.at(verb)(line.substr(std::min(verb.size() + 1, line.size())));
  host::drainEvents();
  return "ok";
}

}  // namespace

// sample-host MODULE [CONSUMER] [OPTION OF THE ORB...]
// CONSUMER: the reference of a CosNotifyComm::StructuredPushConsumer for the notifications.
int main(int argc, char** argv) try {
  if (argc < 2) throw std::runtime_error("usage: sample-host MODULE [CONSUMER] [ORB OPTION...]");
  RunningOrb running(argc, argv);
  if (argc > 2 && argv[2][0] != '-')
    host::setConsumer(CORBA::Object_var(running.orb->string_to_object(argv[2])).in());
  host::publishDomain();
  host::publishNaming();
  host::publishSecurity();
  std::cout << "ready " + load(argv[1], running) << std::endl;
  for (std::string line; line != "quit" && std::getline(std::cin, line);) {
    try {
      std::cout << answer(line, argv[1], running) << std::endl;
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
