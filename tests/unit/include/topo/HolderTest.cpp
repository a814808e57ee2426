#include "topo/Holder.h"

#include <gtest/gtest.h>

namespace {

// Counts its live instances.
struct Counted {
  static int living;
  Counted() { ++living; }
  ~Counted() { --living; }
  int value = 0;
};

int Counted::living = 0;

TEST(TopoHolder, StartsWithADefaultValue) {
  topo::Holder<int> holder;
  EXPECT_EQ(*holder, 0);
}

TEST(TopoHolder, GivesAccessToOneValue) {
  topo::Holder<Counted> holder;
  holder.get()->Value().value = 5;
  EXPECT_EQ(holder->value, 5);
  EXPECT_EQ((*holder).value, 5);
}

TEST(TopoHolder, DestroysTheValueAtTheEndOfTheScope) {
  {
    topo::Holder<Counted> holder;
    EXPECT_EQ(Counted::living, 1);
  }
  EXPECT_EQ(Counted::living, 0);
}

TEST(TopoHolder, DestroysTheValueWhenAnExceptionPasses) {
  const auto fail = [] {
    topo::Holder<Counted> holder;
    throw 1;
  };
  EXPECT_THROW(fail(), int);
  EXPECT_EQ(Counted::living, 0);
}

TEST(TopoHolder, LeavesTheValueToOtherOwnersOfAReference) {
  NS_UTIL::REF_Impl<Counted>* kept = nullptr;
  {
    topo::Holder<Counted> holder;
    kept = holder.get();
    kept->AddRef();
    holder->value = 9;
  }
  EXPECT_EQ(Counted::living, 1);
  EXPECT_EQ(kept->Value().value, 9);
  kept->Release();
  EXPECT_EQ(Counted::living, 0);
}

}  // namespace
