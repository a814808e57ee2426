// A fixture with a server at the endpoints of the test.

#ifndef TESTS_UNIT_ORB_ENDPOINTFIXTURE_H
#define TESTS_UNIT_ORB_ENDPOINTFIXTURE_H

#include <gtest/gtest.h>

#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "orb/orb.h"
#include "tests/support/TemporaryDirectory.h"
#include "tests/unit/orb/Servants.h"

namespace orb_tests {

// The server has an object at the key "Key", whose getLength() returns 7. Thread-safety: none, but
// the server calls the guard on its own threads. Owns the server. Errors: start() throws as
// orb::startServer().
class EndpointFixture : public testing::Test {
 protected:
  void start(const std::vector<orb::Endpoint>& endpoints,
             const orb::Options& options = quickOptions()) {
    server_ = orb::startServer(options, endpoints, nullptr);
    object_ = server_->wellKnownObject("Key");
    published_ = object_->publish(servant_.in(), [this](const orb::Request& request) {
      const std::lock_guard<std::mutex> lock(mutex_);
      peer_ = request.peer;
      return nullptr;
    });
    const PortableServer::POAManager_var manager = server_->rootPoa()->the_POAManager();
    manager->activate();
  }

  // The peer of the last request.
  orb::Peer peer() {
    const std::lock_guard<std::mutex> lock(mutex_);
    return peer_;
  }

  // For the socket file of an endpoint.
  std::string path() const { return (folder_.path() / "a.sock").string(); }

 private:
  const support::TemporaryDirectory folder_;
  const PortableServer::ServantBase_var servant_ = new Answering(7);
  std::mutex mutex_;
  orb::Peer peer_;  // guarded by mutex_

 protected:
  std::unique_ptr<orb::Server> server_;
  std::unique_ptr<orb::WellKnownObject> object_;
  CORBA::Object_var published_;
};

}  // namespace orb_tests

#endif
