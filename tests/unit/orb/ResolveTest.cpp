// The forms of references that orb::resolve() accepts.

#include "orb/resolve.h"

#include <gmock/gmock.h>

#include "tests/support/FakeNaming.h"
#include "tests/unit/orb/Servants.h"
#include "tests/unit/orb/SilentPeer.h"

namespace {

using orb::MalformedReference;
using orb::NamingServiceError;
using orb_tests::Answering;
using orb_tests::lengthOf;
using orb_tests::SilentPeer;
using support::FakeNaming;
using testing::HasSubstr;

constexpr std::chrono::milliseconds kTimeout{30000};

// The server has an object that answers 7 at the key "Object", and a naming service at the keys
// "NameService" and "Names".
class Resolve : public testing::Test {
 protected:
  Resolve() {
    object_ = objectPlace_->publish(answering_.in());
    names_->bound["Object"] = CORBA::Object::_duplicate(object_.in());
    names_->bound["a /b"] = CORBA::Object::_duplicate(object_.in());
    names_->bound["50%"] = CORBA::Object::_duplicate(object_.in());
    names_->bound["%zz"] = CORBA::Object::_duplicate(object_.in());
    names_->bound["nil"] = CORBA::Object::_nil();
    const CORBA::Object_var first = namesPlace_->publish(names_);
    const CORBA::Object_var second = otherNamesPlace_->publish(names_);
  }

  ~Resolve() override {
    otherNamesPlace_->retire();
    namesPlace_->retire();
    objectPlace_->retire();
  }

  CORBA::Object_ptr resolve(const std::string& reference) {
    return orb::resolve(server_->get(), reference, kTimeout);
  }

  CORBA::ULong answerAt(const std::string& reference) {
    const CORBA::Object_var object = resolve(reference);
    return lengthOf(object.in());
  }

  std::string reasonAgainst(const std::string& reference) {
    try {
      const CORBA::Object_var object = resolve(reference);
      return "accepted";
    } catch (const MalformedReference& failure) {
      return failure.what();
    }
  }

  const std::unique_ptr<orb::Server> server_ =
      orb::startServer(orb_tests::quickOptions(), {"127.0.0.1", 0}, nullptr);
  const std::string address_ = orb::format(server_->endpoint());
  const std::unique_ptr<orb::WellKnownObject> objectPlace_ = server_->wellKnownObject("Object");
  const std::unique_ptr<orb::WellKnownObject> namesPlace_ = server_->wellKnownObject("NameService");
  const std::unique_ptr<orb::WellKnownObject> otherNamesPlace_ = server_->wellKnownObject("Names");
  const PortableServer::ServantBase_var answering_{new Answering(7)};
  FakeNaming* const names_ = new FakeNaming;
  const PortableServer::ServantBase_var namesOwner_{names_};
  CORBA::Object_var object_;
};

TEST_F(Resolve, AcceptsACorbalocWithOrWithoutAVersion) {
  for (const std::string start :
       {"corbaloc::", "corbaloc:iiop:", "corbaloc:iiop:1.2@", "CorbaLoc::"}) {
    EXPECT_EQ(7U, answerAt(start + address_ + "/Object")) << start;
  }
}

TEST_F(Resolve, AcceptsACorbalocOfSeveralAddresses) {
  EXPECT_EQ(7U, answerAt("corbaloc::" + address_ + ",iiop:1.2@127.0.0.1:1,:127.0.0.1:1/Object"));
}

TEST_F(Resolve, AcceptsAnIorInEitherCaseOfTheScheme) {
  const CORBA::String_var text = server_->get()->object_to_string(object_.in());
  const std::string ior = text.in();
  EXPECT_EQ(7U, answerAt(ior));
  EXPECT_EQ(7U, answerAt("ior:" + ior.substr(4)));
}

TEST_F(Resolve, ReturnsNilForTheIorOfNil) {
  const CORBA::String_var nil = server_->get()->object_to_string(CORBA::Object::_nil());
  const CORBA::Object_var object = resolve(nil.in());
  EXPECT_TRUE(CORBA::is_nil(object.in()));
}

TEST_F(Resolve, AcceptsACorbanameWithAndWithoutTheKeyOfTheNamingService) {
  EXPECT_EQ(7U, answerAt("corbaname::" + address_ + "#Object"));
  EXPECT_EQ(7U, answerAt("corbaname::" + address_ + "/Names#Object"));
  EXPECT_EQ(7U, answerAt("CORBANAME:iiop:1.2@" + address_ + "/Names#Object"));
}

TEST_F(Resolve, DecodesTheEscapesOfAName) {
  EXPECT_EQ(7U, answerAt("corbaname::" + address_ + "#a%20%2fb"));
  EXPECT_EQ(7U, answerAt("corbaname::" + address_ + "#Objec%74"));
}

TEST_F(Resolve, TakesAPercentSignWithoutTwoDigitsLiterally) {
  EXPECT_EQ(7U, answerAt("corbaname::" + address_ + "#50%"));
  EXPECT_EQ(7U, answerAt("corbaname::" + address_ + "#%zz"));
}

TEST_F(Resolve, RejectsACorbanameWithoutAName) {
  EXPECT_EQ("it has no #NAME", reasonAgainst("corbaname::" + address_));
  EXPECT_EQ("it has no #NAME", reasonAgainst("corbaname::" + address_ + "#"));
}

TEST_F(Resolve, RejectsANulCharacterInAName) {
  EXPECT_EQ("'%00' stands for no character", reasonAgainst("corbaname::" + address_ + "#a%00"));
}

TEST_F(Resolve, RejectsANameThatTheNamingServiceCannotRead) {
  EXPECT_EQ("'a..b' is not a name", reasonAgainst("corbaname::" + address_ + "#a..b"));
}

TEST_F(Resolve, ChecksTheFormOfAReferenceWithoutACall) {
  const SilentPeer peer;
  for (const std::string& good : {peer.corbaloc(), "corbaname:" + peer.address() + "#a..b"}) {
    EXPECT_NO_THROW(orb::checkReference(server_->get(), good)) << good;
  }
  const CORBA::String_var nil = server_->get()->object_to_string(CORBA::Object::_nil());
  for (const std::string bad : {"", "nonsense", "IOR:", "IOR:xyz", "corbaname::127.0.0.1:1",
                                "corbaname::127.0.0.1:1#a%00", nil.in()}) {
    EXPECT_THROW(orb::checkReference(server_->get(), bad), MalformedReference) << bad;
  }
}

TEST_F(Resolve, GivesTheNamingServiceOfACorbanameWithoutACall) {
  const SilentPeer peer;
  for (const std::string& reference :
       {"corbaname:" + peer.address() + "#a", "CORBANAME:" + peer.address() + "/Names#a"}) {
    const CORBA::Object_var service = orb::namingServiceOf(server_->get(), reference, kTimeout);
    EXPECT_EQ(orb::addressOf(service), peer.address().substr(peer.address().rfind('@') + 1))
        << reference;
  }
}

TEST_F(Resolve, RejectsOtherSchemes) {
  for (const std::string reference :
       {"", "nonsense", "file:///dev/null", ":1", "host:", "host:x"}) {
    EXPECT_EQ("it starts with none of IOR:, corbaloc:, corbaname:", reasonAgainst(reference))
        << reference;
  }
}

TEST_F(Resolve, ShowsTheFormOfAnAddress) {
  EXPECT_EQ(
      "it starts with none of IOR:, corbaloc:, corbaname:; write corbaloc::127.0.0.1:1/KEY for "
      "the object KEY at this address",
      reasonAgainst("127.0.0.1:1"));
  for (const std::string host : {"127.0.0.1", "[::1]", "host"}) {
    EXPECT_EQ("the port '99999' is not a number from 1 to 65535", reasonAgainst(host + ":99999"));
  }
}

TEST_F(Resolve, RejectsAnEmptyIor) {
  EXPECT_EQ("nothing follows IOR:", reasonAgainst("IOR:"));
}

TEST_F(Resolve, RejectsATextThatTheOrbCannotRead) {
  for (const std::string reference :
       {"IOR:zz", "corbaloc:", "corbaloc:x:h:99999/X", "corbaname:x:y#z"}) {
    EXPECT_THAT(
        reasonAgainst(reference),
        testing::AnyOf(HasSubstr("BAD_PARAM"), HasSubstr("INV_OBJREF"), HasSubstr("MARSHAL")))
        << reference;
  }
}

TEST_F(Resolve, AcceptsAnAddressWithoutAPort) {
  for (const std::string address : {":127.0.0.1", "iiop:127.0.0.1", "iiop:1.2@127.0.0.1"}) {
    EXPECT_EQ("accepted", reasonAgainst("corbaloc::127.0.0.1:1," + address + "/X")) << address;
  }
  EXPECT_EQ("accepted", reasonAgainst("corbaloc::127.0.0.1:/X"));
}

TEST_F(Resolve, RejectsAPortOutOfRange) {
  const auto text = [](const std::string& port) {
    return "the port '" + port + "' is not a number from 1 to 65535";
  };
  EXPECT_EQ(text("99999"), reasonAgainst("corbaloc::127.0.0.1:99999/X"));
  EXPECT_EQ(text("65536"), reasonAgainst("corbaloc:iiop:1.2@h:65536/X"));
  EXPECT_EQ(text("0"), reasonAgainst("corbaloc:iiop:[::1]:0/X"));
  EXPECT_EQ(text("port"), reasonAgainst("corbaloc::h:1,iiop:h:port/X"));
  EXPECT_EQ(text("28x"), reasonAgainst("corbaloc::h:28x/X"));
  EXPECT_EQ(text("70000"), reasonAgainst("corbaname::h:70000#X"));
}

class ResolveError : public Resolve {
 protected:
  NamingServiceError raisedBy(const std::string& reference) {
    try {
      const CORBA::Object_var object = resolve(reference);
    } catch (const NamingServiceError& failure) {
      return failure;
    }
    throw std::logic_error(reference + " is resolved");
  }
};

TEST_F(ResolveError, ReportsAnUnboundName) {
  const NamingServiceError failure = raisedBy("corbaname::" + address_ + "#x%79");
  EXPECT_EQ(NamingServiceError::Cause::kNotBound, failure.cause());
  EXPECT_STREQ("has no object of the name 'xy'", failure.what());
}

TEST_F(ResolveError, ReportsANameThatIsBoundToNilAsUnbound) {
  EXPECT_EQ(NamingServiceError::Cause::kNotBound,
            raisedBy("corbaname::" + address_ + "#nil").cause());
}

TEST_F(ResolveError, ReportsANameBehindAnUnreachableContextAsUnbound) {
  EXPECT_EQ(NamingServiceError::Cause::kNotBound,
            raisedBy("corbaname::" + address_ + "#elsewhere/x").cause());
}

TEST_F(ResolveError, ReportsAnObjectThatIsNoNamingService) {
  const NamingServiceError failure = raisedBy("corbaname::" + address_ + "/Object#x");
  EXPECT_EQ(NamingServiceError::Cause::kNotNamingService, failure.cause());
  EXPECT_STREQ("is not a NamingContextExt", failure.what());
}

TEST_F(Resolve, EndsTheCallOfASilentNamingServiceAfterTheTimeout) {
  const SilentPeer peer;
  const std::string reference = "corbaname:" + peer.address() + "#x";
  const auto begin = std::chrono::steady_clock::now();
  try {
    const CORBA::Object_var object =
        orb::resolve(server_->get(), reference, std::chrono::milliseconds(50));
    FAIL() << "the peer has answered";
  } catch (const CORBA::SystemException& failure) {
    EXPECT_TRUE(orb::isTimeout(failure)) << orb::describe(failure);
  }
  EXPECT_LT(std::chrono::steady_clock::now() - begin, kTimeout / 2);
}

TEST_F(Resolve, GivesTheObjectTheTimeout) {
  const SilentPeer peer;
  names_->bound["silent"] = server_->get()->string_to_object(peer.corbaloc().c_str());
  for (const std::string& reference : {"corbaname::" + address_ + "#silent", peer.corbaloc()}) {
    const auto begin = std::chrono::steady_clock::now();
    const CORBA::Object_var object =
        orb::resolve(server_->get(), reference, std::chrono::milliseconds(50));
    try {
      object->_non_existent();
      FAIL() << "the peer has answered";
    } catch (const CORBA::SystemException& failure) {
      EXPECT_TRUE(orb::isTimeout(failure)) << orb::describe(failure);
    }
    EXPECT_LT(std::chrono::steady_clock::now() - begin, kTimeout / 2) << reference;
  }
}

TEST(ResolveScheme, IsACorbanameInEitherCase) {
  EXPECT_TRUE(orb::isCorbaname("corbaname::h:1#x"));
  EXPECT_TRUE(orb::isCorbaname("CorbaName::h:1#x"));
  EXPECT_FALSE(orb::isCorbaname("corbaloc::h:1/x"));
}

}  // namespace
