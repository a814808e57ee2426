// Grouping of events into episodes.

#include "orb/episode.h"

#include <gtest/gtest.h>

namespace {

using orb::Episode;
using std::chrono::seconds;

constexpr Episode::Time kStart{};

TEST(Episode, BeginsWithTheFirstEvent) {
  Episode episode(seconds(10));
  EXPECT_TRUE(episode.add(kStart));
  EXPECT_FALSE(episode.add(kStart));
  EXPECT_FALSE(episode.add(kStart + seconds(20))) << "finish() was not called yet";
}

TEST(Episode, EndsAfterAQuietPeriod) {
  Episode episode(seconds(10));
  EXPECT_EQ(std::nullopt, episode.end());
  episode.add(kStart);
  episode.add(kStart + seconds(9));
  EXPECT_EQ(kStart + seconds(19), episode.end());
  EXPECT_EQ(std::nullopt, episode.finish(kStart + seconds(18)));
  EXPECT_EQ(2U, episode.finish(kStart + seconds(19)));
}

TEST(Episode, ReportsItsEndOnceBeforeTheNextEpisode) {
  Episode episode(seconds(10));
  EXPECT_EQ(std::nullopt, episode.finish(kStart));
  episode.add(kStart);
  EXPECT_EQ(1U, episode.finish(kStart + seconds(10)));
  EXPECT_EQ(std::nullopt, episode.finish(kStart + seconds(30)));
  EXPECT_TRUE(episode.add(kStart + seconds(30)));
  EXPECT_EQ(1U, episode.finish(kStart + seconds(40)));
}

}  // namespace
