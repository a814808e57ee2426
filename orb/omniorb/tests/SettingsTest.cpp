// The sources of the settings of the ORB.

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>

#include "orb/orb.h"
#include "tests/support/TemporaryDirectory.h"
#include "tests/unit/orb/RawClient.h"
#include "tests/unit/orb/Servants.h"

namespace {

// An endpoint without a listening address: a start with this setting fails.
constexpr const char* kUnwanted = "giop:tcp:192.0.2.1:4711";

TEST(Settings, OfTheEnvironmentAreIgnored) {
  setenv("ORBendPoint", kUnwanted, 1);
  setenv("ORBgiopMaxMsgSize", "no number", 1);
  const auto server = orb::startServer({}, {"127.0.0.1", 0}, nullptr);
  EXPECT_EQ("127.0.0.1", server->endpoint().host);
}

TEST(Settings, OfAConfigurationFileAreIgnored) {
  const support::TemporaryDirectory directory;
  const std::string file = directory.file("orb.cfg");
  std::ofstream(file) << "endPoint = " << kUnwanted << "\n";
  setenv("OMNIORB_CONFIG", file.c_str(), 1);
  const auto server = orb::startServer({}, {"127.0.0.1", 0}, nullptr);
  EXPECT_EQ("127.0.0.1", server->endpoint().host);
}

TEST(Settings, OfTheEnvironmentAreIgnoredByClients) {
  setenv("ORBgiopMaxMsgSize", "no number", 1);
  EXPECT_NO_THROW(orb::startClient({}));
}

// Replies of next_n() have 100 texts of 1,000 characters.
class ManyTexts final : public POA_TopoManagementManager::NodeIterator_I {
 public:
  CORBA::Boolean next_n(CORBA::ULong, TopoManagementManager::NodeList_T_out list) override {
    const std::string text(1000, 'x');
    TopoManagementManager::NodeList_T_var nodes = new TopoManagementManager::NodeList_T;
    nodes->length(100);
    for (CORBA::ULong i = 0; i < nodes->length(); ++i) {
      nodes[i].nativeEMSName = text.c_str();
    }
    list = nodes._retn();
    return true;
  }
  CORBA::ULong getLength() override { return 0; }
  void destroy() override {}
};

// The size of the first message of a reply, as its GIOP header says.
std::uint32_t sizeOfFirstMessage(const std::string& reply) {
  std::uint32_t size = 0;
  for (std::size_t i = 11; i >= 8 && reply.size() >= 12; --i) {
    size = size << 8 | static_cast<unsigned char>(reply[i]);
  }
  return size;
}

TEST(Settings, SendLongRepliesInPiecesOf32KiB) {
  const auto server = orb::startServer({}, {"127.0.0.1", 0}, nullptr);
  const auto object = server->wellKnownObject("Key");
  const PortableServer::ServantBase_var servant = new ManyTexts;
  const CORBA::Object_var published = object->publish(servant.in());
  const PortableServer::POAManager_var manager = server->rootPoa()->the_POAManager();
  manager->activate();
  using orb_tests::Message;
  Message request(2, Message::Type::kRequest, false);
  request.number(1).octet(3).octet(0).octet(0).octet(0);  // id, reply expected
  request.number(0).octets("Key").text("next_n").number(0).align(8).number(1);
  const orb_tests::RawClient client(server->endpoint());
  ASSERT_TRUE(client.send(request.bytes()));
  EXPECT_EQ(sizeOfFirstMessage(client.receive()), 32768U - 12U);
}

}  // namespace
