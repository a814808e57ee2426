// A host for the module that is operated by lines on standard input.

#include <iostream>
#include <stdexcept>

#include "Module.h"
#include "platform/agent/AgentConfig.h"

namespace {

// Returns the answer to a request.
std::string answer(const std::string& verb, const std::string& id, host::Module& module,
                   host::Orb& orb) {
  if (verb == "create") {
    host::createNode(id);
  } else if (verb == "change") {
    host::changeNode(id, "new name of " + id);
  } else if (verb == "delete") {
    host::deleteNode(id);
  } else if (verb == "unload") {
    module.unload();
  } else if (verb == "load") {
    module.load();
    return "ok " + host::managerReference(orb.get());
  } else {
    throw std::runtime_error("no such request");
  }
  host::drainEvents();
  return "ok";
}

void serve(host::Module& module, host::Orb& orb) {
  for (std::string line; std::getline(std::cin, line) && line != "quit";) {
    const std::size_t space = std::min(line.find(' '), line.size());
    try {
      std::cout << answer(line.substr(0, space), line.substr(std::min(space + 1, line.size())),
                          module, orb)
                << std::endl;
    } catch (const std::exception& failure) {
      std::cout << "failed " << failure.what() << std::endl;
    }
  }
}

}  // namespace

// sample-host MODULE [CONSUMER] [OPTION OF THE ORB...]
// CONSUMER: the reference of a CosNotifyComm::StructuredPushConsumer that gets the notifications.
int main(int argc, char** argv) {
  if (argc < 2) {
    std::cerr << "usage: sample-host MODULE [CONSUMER] [OPTION OF THE ORB...]\n";
    return 2;
  }
  try {
    host::Orb orb(argc, argv);
    if (argc > 2 && argv[2][0] != '-') {
      const CORBA::Object_var object = orb.get()->string_to_object(argv[2]);
      const auto consumer = CosNotifyComm::StructuredPushConsumer::_unchecked_narrow(object.in());
      host::setConsumer(consumer);
      CORBA::release(consumer);
    }
    host::publishDomain();
    host::publishNaming();
    host::publishSecurity();
    host::Module module(argv[1], orb);
    module.load();
    std::cout << "ready " << host::managerReference(orb.get()) << std::endl;
    serve(module, orb);
    std::cout << "ok" << std::endl;
  } catch (const std::exception& failure) {
    std::cerr << failure.what() << "\n";
    return 1;
  } catch (const CORBA::Exception& failure) {
    std::cerr << "the ORB fails: " << failure._name() << "\n";
    return 1;
  }
  return 0;
}
