// The ORB's list of interceptors, which threads of the ORB read without a lock.

#include <gtest/gtest.h>
// The second header needs the first.
#include <omniORB4/CORBA.h>

#include <omniORB4/omniInterceptors.h>

#include <omniORB4/internal/interceptors.h>

#include <utility>
#include <vector>

#include "orb/orb.h"

namespace {

using omni::omniInterceptorP;

// Returns the addresses of the list elements and of their functions.
std::vector<std::pair<const void*, const void*>> requestInterceptors() {
  std::vector<std::pair<const void*, const void*>> all;
  for (const omniInterceptorP::elmT* element = omniInterceptorP::serverReceiveRequest;
       element != nullptr; element = element->next) {
    all.emplace_back(element, element->func);
  }
  return all;
}

TEST(Interceptors, DoNotChangeWhileAServerListens) {
  const auto server = orb::startServer({}, {"127.0.0.1", 0}, nullptr);
  const auto atStart = requestInterceptors();
  EXPECT_FALSE(atStart.empty());
  server->observeRequests([](const orb::ObjectKey&) {});
  EXPECT_EQ(atStart, requestInterceptors());
  server->observeRequests(nullptr);
  EXPECT_EQ(atStart, requestInterceptors());
}

TEST(Interceptors, HaveTheSameNumberForEveryServer) {
  const auto count = [] {
    const auto server = orb::startServer({}, {"127.0.0.1", 0}, nullptr);
    return requestInterceptors().size();
  };
  const std::size_t first = count();
  EXPECT_EQ(first, count());
  EXPECT_EQ(first, count());
}

}  // namespace
