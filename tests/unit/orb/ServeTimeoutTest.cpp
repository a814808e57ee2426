// A client that asks and does not read.

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstring>
#include <future>

#include "tests/unit/orb/Servants.h"

namespace {

// Answers each batch with more than the buffers of a connection hold.
class Lavish final : public POA_TopoManagementManager::NodeIterator_I {
 public:
  std::future<void> asked() { return asked_.get_future(); }

  CORBA::Boolean next_n(CORBA::ULong, TopoManagementManager::NodeList_T_out list) override {
    const std::string text(1024 * 1024, 'x');
    TopoManagementManager::NodeList_T_var nodes = new TopoManagementManager::NodeList_T;
    nodes->length(64);
    for (CORBA::ULong i = 0; i < nodes->length(); ++i) {
      nodes[i].nativeEMSName = text.c_str();
    }
    list = nodes._retn();
    asked_.set_value();
    return true;
  }
  CORBA::ULong getLength() override { return 0; }
  void destroy() override {}

 private:
  std::promise<void> asked_;
};

// The texts and numbers of a GIOP 1.0 message, little-endian.
class Encapsulation {
 public:
  void number(std::uint32_t value) {
    bytes_.append((4 - bytes_.size() % 4) % 4, '\0');
    for (int shift = 0; shift < 32; shift += 8) {
      bytes_.push_back(static_cast<char>(value >> shift));
    }
  }
  void octet(char value) { bytes_.push_back(value); }
  void octets(const std::string& value) {
    number(static_cast<std::uint32_t>(value.size()));
    bytes_ += value;
  }
  const std::string& bytes() const { return bytes_; }

 private:
  std::string bytes_;
};

// Request 1 for a batch of one.
std::string requestTo(const std::string& key) {
  Encapsulation body;
  body.number(0);  // service contexts
  body.number(1);
  body.octet(1);  // a reply is expected
  body.octets(key);
  body.octets(std::string("next_n") + '\0');
  body.number(0);  // principal
  body.number(1);
  Encapsulation message;
  message.octet('G');
  message.octet('I');
  message.octet('O');
  message.octet('P');
  message.number(0x00010001);  // version 1.0, little-endian, a request
  message.number(static_cast<std::uint32_t>(body.bytes().size()));
  return message.bytes() + body.bytes();
}

// A connection that only sends.
class DeafClient {
 public:
  explicit DeafClient(const orb::Endpoint& endpoint) : socket_(socket(AF_INET, SOCK_STREAM, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(endpoint.port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    connect(socket_, reinterpret_cast<sockaddr*>(&address), sizeof address);
  }
  ~DeafClient() { close(socket_); }
  DeafClient(const DeafClient&) = delete;
  DeafClient& operator=(const DeafClient&) = delete;

  bool send(const std::string& bytes) const {
    return ::send(socket_, bytes.data(), bytes.size(), 0) == static_cast<ssize_t>(bytes.size());
  }

 private:
  const int socket_;
};

TEST(ServeTimeout, EndsTheReplyToAClientThatDoesNotRead) {
  orb::Options options;
  options.serveTimeout = std::chrono::milliseconds(300);
  const auto server = orb::startServer(options, {"127.0.0.1", 0}, nullptr);
  const auto object = server->wellKnownObject("Key");
  const PortableServer::Servant_var<Lavish> servant = new Lavish;
  const CORBA::Object_var published = object->publish(servant.in());
  std::future<void> asked = servant->asked();
  const DeafClient client(server->endpoint());
  ASSERT_TRUE(client.send(requestTo("Key")));
  asked.wait();
  const auto begin = std::chrono::steady_clock::now();
  object->retire();  // returns when the reply is sent or given up
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(20));
}

}  // namespace
