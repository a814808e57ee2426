// Assembly of requests from bytes that arrive in pieces.

#include "orb/incoming/assembler.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "tests/unit/orb/RawClient.h"

namespace {

using orb::Assembler;
using orb_tests::Message;
using orb_tests::requestTo;
using std::chrono::seconds;
using Type = Message::Type;

constexpr Assembler::Time kStart{};
constexpr std::size_t kLimit = 10000;
constexpr std::size_t kLargeLimit = 1000000;

// Returns the beginning of a GIOP 1.2 request, up to the arguments.
Message request(std::uint32_t id, const std::string& operation, bool moreFragments) {
  Message message(2, Type::kRequest, moreFragments);
  message.number(id).octet(3).octet(0).octet(0).octet(0);
  return message.number(0).octets("Key").text(operation).number(0).align(8);
}

Message fragment(std::uint32_t id, const std::string& content, bool last) {
  return Message(2, Type::kFragment, !last).number(id).raw(content);
}

Message cancellation(std::uint32_t id) {
  return Message(2, static_cast<Type>(2), false).number(id);
}

std::string content(Assembler::Request taken) {
  std::string bytes(taken.bytes.size(), '\0');
  for (std::size_t at = 0; at < bytes.size();) {
    at += taken.bytes.take(bytes.data() + at, bytes.size() - at);
  }
  return bytes;
}

class AssemblerTest : public testing::Test {
 protected:
  // Passes all bytes to the assembler and returns the completed requests.
  std::vector<std::string> take(const std::string& bytes) {
    std::vector<std::string> complete;
    for (std::size_t at = 0; at < bytes.size() && valid_;) {
      const Assembler::Progress taken =
          assembler_.take(bytes.data() + at, bytes.size() - at, kStart);
      at += taken.bytes;
      valid_ = taken.valid;
      if (assembler_.isComplete()) {
        complete.push_back(contentOrRefusal(assembler_.release()));
      } else if (taken.starved) {
        break;
      }
    }
    return complete;
  }

  static std::string contentOrRefusal(Assembler::Request taken) {
    return taken.refused
               ? "refused " + taken.refused->operation + " " + std::to_string(taken.declaredBytes)
               : content(std::move(taken));
  }

  const orb::RequestLimits limits_{kLimit, kLargeLimit, {"large"}};
  orb::ReceiveBudget budget_{kLargeLimit};
  Assembler assembler_{limits_, budget_};
  bool valid_ = true;
};

using Strings = std::vector<std::string>;

TEST_F(AssemblerTest, SeparatesRequestsThatArriveTogether) {
  const std::string first = request(1, "a", false).bytes();
  const std::string second = requestTo("Key", "b").bytes();
  EXPECT_EQ((Strings{first, second}), take(first + second));
}

TEST_F(AssemblerTest, AcceptsRequestsByteByByte) {
  const std::string bytes = request(1, "a", false).raw("12345").bytes();
  for (std::size_t i = 0; i + 1 < bytes.size(); ++i) {
    EXPECT_EQ(Strings{}, take(bytes.substr(i, 1)));
  }
  EXPECT_EQ(Strings{bytes}, take(bytes.substr(bytes.size() - 1)));
}

TEST_F(AssemblerTest, JoinsFragments) {
  const std::string pieces = request(1, "a", true).bytes() +
                             fragment(1, "12345678", false).bytes() +
                             fragment(1, "123", true).bytes();
  EXPECT_EQ(Strings{request(1, "a", false).raw("12345678123").bytes()}, take(pieces));
}

TEST_F(AssemblerTest, JoinsInterleavedFragments) {
  const std::string pieces = request(1, "a", true).bytes() + request(2, "b", true).bytes() +
                             request(3, "c", false).bytes() + fragment(1, "1", true).bytes() +
                             fragment(2, "2", true).bytes();
  EXPECT_EQ((Strings{request(3, "c", false).bytes(), request(1, "a", false).raw("1").bytes(),
                     request(2, "b", false).raw("2").bytes()}),
            take(pieces));
}

TEST_F(AssemblerTest, DropsACancelledRequest) {
  EXPECT_EQ(Strings{}, take(request(1, "a", true).bytes() + cancellation(1).bytes() +
                            fragment(1, "1", true).bytes()));
  EXPECT_TRUE(valid_);
  EXPECT_EQ(std::nullopt, assembler_.incompleteSince());
}

TEST_F(AssemblerTest, RefusesAnOversizedRequestAfterItsHeader) {
  std::string bytes = request(1, "a", false).raw(std::string(20000, 'x')).bytes();
  const std::string refusal = "refused a " + std::to_string(bytes.size());
  EXPECT_EQ(Strings{refusal}, take(bytes.substr(0, 100)));
  bytes += request(2, "b", false).bytes();
  EXPECT_EQ(Strings{request(2, "b", false).bytes()}, take(bytes.substr(100)));
}

TEST_F(AssemblerTest, RefusesAnOversizedRequestInEveryVersion) {
  for (const char version : {'\0', '\1'}) {
    Message old(version, Type::kRequest, false);
    old.number(1).number(77).octets("context").number(9).octet(1);
    if (version == 1) {
      old.octet(0).octet(0).octet(0);
    }
    old.octets("Key").text("a").number(0).raw(std::string(20000, 'x'));
    const std::string refusal = "refused a " + std::to_string(old.bytes().size());
    EXPECT_EQ(Strings{refusal}, take(old.bytes()));
  }
}

TEST_F(AssemblerTest, RefusesFragmentsWhoseSumIsOversized) {
  const std::string first = request(1, "a", true).bytes();
  const std::string piece(8000, 'x');
  const std::size_t sum = first.size() + 2 * piece.size();
  EXPECT_EQ(Strings{"refused a " + std::to_string(sum)},
            take(first + fragment(1, piece, false).bytes() + fragment(1, piece, false).bytes() +
                 fragment(1, piece, false).bytes()));
  EXPECT_NE(std::nullopt, assembler_.incompleteSince()) << "the last fragment has not arrived";
  EXPECT_EQ(Strings{request(2, "b", false).bytes()},
            take(fragment(1, piece, true).bytes() + request(2, "b", false).bytes()));
}

TEST_F(AssemblerTest, AcceptsLargerRequestsForLargeOperations) {
  const std::string bytes = request(1, "large", false).raw(std::string(500000, 'x')).bytes();
  EXPECT_EQ(Strings{bytes}, take(bytes));
  const std::string tooLarge =
      request(1, "large", false).raw(std::string(kLargeLimit, 'x')).bytes();
  EXPECT_EQ(Strings{"refused large " + std::to_string(tooLarge.size())}, take(tooLarge));
}

TEST_F(AssemblerTest, RejectsAnOversizedRequestWithALateOperation) {
  take(request(1, std::string(100000, 'x'), false).bytes());
  EXPECT_FALSE(valid_);
}

// Returns a request for the large operation with `count` service contexts of 16 bytes.
std::string largeWithContexts(std::uint32_t contexts) {
  Message message(2, Type::kRequest, false);
  message.number(1).octet(3).octet(0).octet(0).octet(0);
  message.number(0).octets("Key").text("large").number(contexts);
  for (std::uint32_t i = 0; i < contexts; ++i) {
    message.number(i).octets("12345678");
  }
  return message.align(8).raw(std::string(200000, 'x')).bytes();
}

TEST_F(AssemblerTest, AcceptsServiceContextsInTheFirstChunkOfALargeOperation) {
  const std::string bytes = largeWithContexts(4000);
  EXPECT_EQ(Strings{}, take(bytes.substr(0, 200)));
  EXPECT_EQ(Strings{bytes}, take(bytes.substr(200)));
}

TEST_F(AssemblerTest, RefusesALargeOperationWithManyServiceContexts) {
  const std::string bytes = largeWithContexts(5000);
  EXPECT_EQ(Strings{"refused large " + std::to_string(bytes.size())}, take(bytes));
}

TEST_F(AssemblerTest, AllocatesNoMemoryForADeclaredSize) {
  const std::string bytes = request(1, "large", false).raw(std::string(900000, 'x')).bytes();
  take(bytes.substr(0, 70000));
  EXPECT_TRUE(budget_.take(kLargeLimit - 3 * orb::Chunks::kChunk));
}

TEST_F(AssemblerTest, WaitsForTheReceiveBudget) {
  ASSERT_TRUE(budget_.take(kLargeLimit));
  const std::string bytes = request(1, "large", false).raw(std::string(200000, 'x')).bytes();
  const Assembler::Progress taken = assembler_.take(bytes.data(), bytes.size(), kStart);
  EXPECT_TRUE(taken.starved);
  EXPECT_EQ(orb::Chunks::kChunk, taken.bytes);
  budget_.give(kLargeLimit);
  EXPECT_EQ(Strings{bytes.substr(0)}, take(bytes.substr(taken.bytes)));
}

TEST_F(AssemblerTest, FreesTheBudgetWhenARequestIsRead) {
  const std::string bytes = request(1, "large", false).raw(std::string(500000, 'x')).bytes();
  for (int i = 0; i < 5; ++i) {
    EXPECT_EQ(Strings{bytes}, take(bytes));
  }
  EXPECT_TRUE(budget_.take(kLargeLimit));
}

TEST_F(AssemblerTest, FreesTheBudgetWhenARequestIsRefused) {
  take(request(1, "large", true).bytes() + fragment(1, std::string(500000, 'x'), false).bytes() +
       fragment(1, std::string(600000, 'x'), false).bytes());
  EXPECT_NE(std::nullopt, assembler_.incompleteSince()) << "the last fragment has not arrived";
  EXPECT_TRUE(budget_.take(kLargeLimit));
}

TEST_F(AssemblerTest, FreesTheBudgetWhenTheConnectionEnds) {
  {
    Assembler other(limits_, budget_);
    const std::string bytes = request(1, "large", false).raw(std::string(500000, 'x')).bytes();
    other.take(bytes.data(), bytes.size() - 1, kStart);
    EXPECT_FALSE(budget_.take(kLargeLimit));
  }
  EXPECT_TRUE(budget_.take(kLargeLimit));
}

TEST_F(AssemblerTest, FreesTheBudgetWhenARequestIsReplaced) {
  const std::string bytes(4 * orb::Chunks::kChunk, 'x');
  {
    orb::Chunks chunks(budget_);
    chunks.append(bytes.data(), bytes.size());
    orb::Chunks others(budget_);
    others.append(bytes.data(), bytes.size());
    chunks = std::move(others);
    EXPECT_EQ(bytes.size(), chunks.size());
  }
  EXPECT_TRUE(budget_.take(kLargeLimit));
}

TEST_F(AssemblerTest, ReportsTheArrivalOfTheFirstByte) {
  EXPECT_EQ(std::nullopt, assembler_.incompleteSince());
  const std::string first = request(1, "a", true).bytes();
  assembler_.take(first.data(), 1, kStart + seconds(1));
  EXPECT_EQ(kStart + seconds(1), assembler_.incompleteSince());
  assembler_.take(first.data() + 1, first.size() - 1, kStart + seconds(2));
  EXPECT_EQ(kStart + seconds(1), assembler_.incompleteSince());
  const std::string last = fragment(1, "1", true).bytes();
  assembler_.take(last.data(), last.size() - 1, kStart + seconds(3));
  EXPECT_EQ(kStart + seconds(1), assembler_.incompleteSince());
  assembler_.take(last.data() + last.size() - 1, 1, kStart + seconds(4));
  EXPECT_TRUE(assembler_.isComplete());
  EXPECT_EQ(std::nullopt, assembler_.incompleteSince());
}

struct Invalid {
  const char* name;
  std::string bytes;
};

TEST(AssemblerInput, IsInvalidForMessagesThatViolateGiop) {
  const std::string good = request(1, "a", false).bytes();
  std::string magic = good;
  magic[0] = 'X';
  std::string version = good;
  version[5] = 3;
  std::string type = good;
  type[7] = 8;
  std::string order = fragment(1, "1", true).bytes();
  order[6] = 0;
  std::reverse(order.begin() + 8, order.begin() + 12);   // the size
  std::reverse(order.begin() + 12, order.begin() + 16);  // the id
  std::string many;
  for (std::uint32_t id = 1; id <= 5; ++id) {
    many += request(id, "a", true).bytes();
  }
  const std::string odd = request(1, "a", true).raw("1").bytes() + fragment(1, "1", true).bytes();
  const std::string byProfile =
      Message(2, Type::kRequest, false).number(1).number(3).number(1).number(0).octets("").bytes();
  const std::string locateByReference =
      Message(2, static_cast<Type>(3), false).number(1).number(2).number(0).bytes();
  const std::string shortFragment = Message(1, Type::kFragment, false).raw("12345678").bytes();
  std::string locate = request(1, "a", false).raw(std::string(20000, 'x')).bytes();
  locate[7] = 3;
  const std::vector<Invalid> all = {
      {"no GIOP", magic},
      {"a version to come", version},
      {"an unknown type", type},
      {"a reply", Message(2, Type::kReply, false).number(1).bytes()},
      {"a fragment without its request", Message(2, Type::kFragment, false).bytes()},
      {"a fragment of another byte order", request(1, "a", true).bytes() + order},
      {"a fragment of another version", request(0, "a", true).bytes() + shortFragment},
      {"a locate request over the limit", locate},
      {"too many incomplete requests", many},
      {"the same request twice", request(1, "a", true).bytes() + request(1, "a", true).bytes()},
      {"numbers that fragments shift", odd},
      {"a request to a profile", byProfile},
      {"a search for a reference", locateByReference},
  };
  for (const Invalid& invalid : all) {
    const orb::RequestLimits limits{kLimit, kLargeLimit, {}};
    orb::ReceiveBudget budget{kLargeLimit};
    Assembler assembler(limits, budget);
    EXPECT_FALSE(assembler.take(invalid.bytes.data(), invalid.bytes.size(), kStart).valid)
        << invalid.name;
  }
}

}  // namespace
