// Assembly of requests from bytes that arrive in pieces.

#include "orb/incoming/assembler.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <ostream>
#include <string>
#include <vector>

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

// A complete request, or the refused operation and the size of the original.
struct Completed {
  std::string bytes;
  std::string refusedOperation;
  std::size_t declaredBytes = 0;
};

bool operator==(const Completed& left, const Completed& right) {
  return left.bytes == right.bytes && left.refusedOperation == right.refusedOperation &&
         left.declaredBytes == right.declaredBytes;
}

void PrintTo(const Completed& request, std::ostream* out) {
  *out << "request of " << request.bytes.size() << " bytes, refused operation \""
       << request.refusedOperation << "\" of " << request.declaredBytes << " bytes";
}

using Requests = std::vector<Completed>;

Requests complete(const std::vector<std::string>& all) {
  Requests requests;
  for (const std::string& bytes : all) {
    requests.push_back({bytes, "", 0});
  }
  return requests;
}

Requests refused(const std::string& operation, std::size_t declaredBytes) {
  return {{"", operation, declaredBytes}};
}

class AssemblerTest : public testing::Test {
 protected:
  // Passes all bytes to the assembler and returns the completed requests.
  Requests take(const std::string& bytes) {
    Requests requests;
    for (std::size_t at = 0; at < bytes.size() && valid_;) {
      const Assembler::Progress taken =
          assembler_.take(bytes.data() + at, bytes.size() - at, kStart);
      at += taken.bytes;
      valid_ = taken.valid;
      if (assembler_.isComplete()) {
        requests.push_back(completed(assembler_.release()));
      } else if (taken.starved) {
        break;
      }
    }
    return requests;
  }

  static Completed completed(Assembler::Request taken) {
    return taken.refused ? Completed{"", taken.refused->operation, taken.declaredBytes}
                         : Completed{content(std::move(taken)), "", 0};
  }

  const orb::RequestLimits limits_{kLimit, kLargeLimit, {"large"}};
  orb::ReceiveBudget budget_{kLargeLimit};
  Assembler assembler_{limits_, budget_};
  bool valid_ = true;
};

TEST_F(AssemblerTest, SeparatesRequestsThatArriveTogether) {
  const std::string first = request(1, "a", false).bytes();
  const std::string second = requestTo("Key", "b").bytes();
  EXPECT_EQ((complete({first, second})), take(first + second));
}

TEST_F(AssemblerTest, AcceptsRequestsByteByByte) {
  const std::string bytes = request(1, "a", false).raw("12345").bytes();
  for (std::size_t i = 0; i + 1 < bytes.size(); ++i) {
    EXPECT_EQ(Requests{}, take(bytes.substr(i, 1)));
  }
  EXPECT_EQ(complete({bytes}), take(bytes.substr(bytes.size() - 1)));
}

TEST_F(AssemblerTest, JoinsFragments) {
  const std::string pieces = request(1, "a", true).bytes() +
                             fragment(1, "12345678", false).bytes() +
                             fragment(1, "123", true).bytes();
  EXPECT_EQ(complete({request(1, "a", false).raw("12345678123").bytes()}), take(pieces));
}

TEST_F(AssemblerTest, JoinsInterleavedFragments) {
  const std::string pieces = request(1, "a", true).bytes() + request(2, "b", true).bytes() +
                             request(3, "c", false).bytes() + fragment(1, "1", true).bytes() +
                             fragment(2, "2", true).bytes();
  EXPECT_EQ((complete({request(3, "c", false).bytes(), request(1, "a", false).raw("1").bytes(),
                       request(2, "b", false).raw("2").bytes()})),
            take(pieces));
}

TEST_F(AssemblerTest, DropsACancelledRequest) {
  EXPECT_EQ(Requests{}, take(request(1, "a", true).bytes() + cancellation(1).bytes() +
                             fragment(1, "1", true).bytes()));
  EXPECT_TRUE(valid_);
  EXPECT_EQ(std::nullopt, assembler_.incompleteSince());
}

TEST_F(AssemblerTest, RefusesAnOversizedRequestAfterItsHeader) {
  std::string bytes = request(1, "a", false).raw(std::string(20000, 'x')).bytes();
  const Requests refusal = refused("a", bytes.size());
  EXPECT_EQ(refusal, take(bytes.substr(0, 100)));
  bytes += request(2, "b", false).bytes();
  EXPECT_EQ(complete({request(2, "b", false).bytes()}), take(bytes.substr(100)));
}

TEST_F(AssemblerTest, RefusesAnOversizedRequestInEveryVersion) {
  for (const char version : {'\0', '\1'}) {
    Message old(version, Type::kRequest, false);
    old.number(1).number(77).octets("context").number(9).octet(1);
    if (version == 1) {
      old.octet(0).octet(0).octet(0);
    }
    old.octets("Key").text("a").number(0).raw(std::string(20000, 'x'));
    EXPECT_EQ(refused("a", old.bytes().size()), take(old.bytes()));
  }
}

TEST_F(AssemblerTest, RefusesFragmentsWhoseSumIsOversized) {
  const std::string first = request(1, "a", true).bytes();
  const std::string piece(8000, 'x');
  const std::size_t sum = first.size() + 2 * piece.size();
  EXPECT_EQ(refused("a", sum),
            take(first + fragment(1, piece, false).bytes() + fragment(1, piece, false).bytes() +
                 fragment(1, piece, false).bytes()));
  EXPECT_NE(std::nullopt, assembler_.incompleteSince()) << "the last fragment has not arrived";
  EXPECT_EQ(complete({request(2, "b", false).bytes()}),
            take(fragment(1, piece, true).bytes() + request(2, "b", false).bytes()));
}

TEST_F(AssemblerTest, AcceptsLargerRequestsForLargeOperations) {
  const std::string bytes = request(1, "large", false).raw(std::string(500000, 'x')).bytes();
  EXPECT_EQ(complete({bytes}), take(bytes));
  const std::string tooLarge =
      request(1, "large", false).raw(std::string(kLargeLimit, 'x')).bytes();
  EXPECT_EQ(refused("large", tooLarge.size()), take(tooLarge));
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
  EXPECT_EQ(Requests{}, take(bytes.substr(0, 200)));
  EXPECT_EQ(complete({bytes}), take(bytes.substr(200)));
}

TEST_F(AssemblerTest, RefusesALargeOperationWithManyServiceContexts) {
  const std::string bytes = largeWithContexts(5000);
  EXPECT_EQ(refused("large", bytes.size()), take(bytes));
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
  EXPECT_EQ(complete({bytes}), take(bytes.substr(taken.bytes)));
}

TEST_F(AssemblerTest, FreesTheBudgetWhenARequestIsRead) {
  const std::string bytes = request(1, "large", false).raw(std::string(500000, 'x')).bytes();
  for (int i = 0; i < 5; ++i) {
    EXPECT_EQ(complete({bytes}), take(bytes));
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

// --- Messages that violate GIOP.

class AssemblerInput : public testing::Test {
 protected:
  static void expectInvalid(const std::string& bytes, const char* name) {
    const orb::RequestLimits limits{kLimit, kLargeLimit, {}};
    orb::ReceiveBudget budget{kLargeLimit};
    Assembler assembler(limits, budget);
    EXPECT_FALSE(assembler.take(bytes.data(), bytes.size(), kStart).valid) << name;
  }

  // A complete request with another value at an offset of its header.
  static std::string requestWith(std::size_t offset, char value) {
    std::string bytes = request(1, "a", false).bytes();
    bytes[offset] = value;
    return bytes;
  }

  const std::string begun_ = request(1, "a", true).bytes();  // a first fragment
};

TEST_F(AssemblerInput, IsInvalidWithAnUnknownHeader) {
  expectInvalid(requestWith(0, 'X'), "no GIOP");
  expectInvalid(requestWith(5, 3), "a later version");
  expectInvalid(requestWith(7, 8), "an unknown type");
  expectInvalid(Message(2, Type::kReply, false).number(1).bytes(), "a reply");
}

TEST_F(AssemblerInput, IsInvalidForAFragmentThatDoesNotFitItsRequest) {
  std::string order = fragment(1, "1", true).bytes();
  order[6] = 0;
  std::reverse(order.begin() + 8, order.begin() + 12);   // the size
  std::reverse(order.begin() + 12, order.begin() + 16);  // the id
  const std::string otherVersion = Message(1, Type::kFragment, false).raw("12345678").bytes();
  const std::string odd = request(1, "a", true).raw("1").bytes();
  expectInvalid(Message(2, Type::kFragment, false).bytes(), "a fragment without its request");
  expectInvalid(begun_ + order, "a fragment of another byte order");
  expectInvalid(request(0, "a", true).bytes() + otherVersion, "a fragment of another version");
  expectInvalid(odd + fragment(1, "1", true).bytes(), "a fragment with unaligned numbers");
}

TEST_F(AssemblerInput, IsInvalidForTooManyIncompleteRequests) {
  std::string many;
  for (std::uint32_t id = 1; id <= 5; ++id) {
    many += request(id, "a", true).bytes();
  }
  expectInvalid(many, "five requests");
  expectInvalid(begun_ + begun_, "the same request twice");
}

TEST_F(AssemblerInput, IsInvalidForATargetWithoutAnObjectKey) {
  expectInvalid(
      Message(2, Type::kRequest, false).number(1).number(3).number(1).number(0).octets("").bytes(),
      "a request to a profile");
  expectInvalid(Message(2, static_cast<Type>(3), false).number(1).number(2).number(0).bytes(),
                "a locate request for a reference");
}

TEST_F(AssemblerInput, IsInvalidForALocateRequestOverTheLimit) {
  std::string locate = request(1, "a", false).raw(std::string(20000, 'x')).bytes();
  locate[7] = 3;
  expectInvalid(locate, "a locate request");
}

}  // namespace
