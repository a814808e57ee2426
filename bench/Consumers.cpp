// A separate process of consumers, so that notifications pass over the loopback. Prints the
// references of the consumers, one on each line, and accepts notifications until it is killed.

#include <unistd.h>

#include <cstdlib>
#include <iostream>

#include "orb/notification.h"
#include "orb/orb.h"

namespace {

class Consumer final : public POA_CosNotifyComm::StructuredPushConsumer {
 public:
  void push_structured_event(const CosNotification::StructuredEvent& /*event*/) override {}
  void disconnect_structured_push_consumer() override {}
  void offer_change(const CosNotification::EventTypeSeq& /*added*/,
                    const CosNotification::EventTypeSeq& /*removed*/) override {}
};

void serve(CORBA::ORB_ptr orb) {
  const PortableServer::ServantBase_var owner = new Consumer;
  auto* const consumer = dynamic_cast<Consumer*>(owner.in());
  const CosNotifyComm::StructuredPushConsumer_var reference = consumer->_this();
  const CORBA::String_var text = orb->object_to_string(reference.in());
  std::cout << text.in() << std::endl;
}

}  // namespace

int main(int argc, char* argv[]) {
  const auto server = orb::startServer({}, {"127.0.0.1", 0}, nullptr);
  const PortableServer::POAManager_var manager = server->rootPoa()->the_POAManager();
  manager->activate();
  for (int left = argc > 1 ? std::atoi(argv[1]) : 1; left > 0; --left) {
    serve(server->get());
  }
  ::pause();
  return 0;
}
