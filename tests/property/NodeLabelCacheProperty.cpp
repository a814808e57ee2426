#include "topoevent/NodeLabelCache.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/property/Random.h"
#include "tests/support/CollidingKeys.h"

namespace {

// The oracle: two parallel lists with a linear search.
class Oracle {
 public:
  void append(const std::string& identifier, const std::string& label) {
    identifiers_.push_back(identifier);
    labels_.push_back(label);
  }

  bool storeChange(const std::string& identifier, const std::string& label) {
    auto known = labels_.begin();
    for (auto each = identifiers_.begin(); each != identifiers_.end() && known != labels_.end();
         ++each, ++known) {
      if (*each == identifier) {
        const bool changed = *known != label;
        *known = label;
        return changed;
      }
    }
    return true;
  }

  const std::vector<std::string>& identifiers() const { return identifiers_; }
  const std::vector<std::string>& labels() const { return labels_; }

 private:
  std::vector<std::string> identifiers_;
  std::vector<std::string> labels_;
};

TEST(TopoNodeLabelCacheProperty, EqualsTheWalkOverBothLists) {
  Random random;
  for (int round = 0; round < 1000; ++round) {
    topo::NodeLabelCache cache;
    Oracle oracle;
    const std::string alphabet = random.number(0, 1) == 0 ? "ab" : std::string("a\0\xc3\xa4", 4);
    for (int step = random.number(0, 60); step > 0; --step) {
      const std::string identifier = random.text(alphabet, 3);
      const std::string label = random.text(alphabet, 2);
      if (random.number(0, 2) == 0) {
        cache.append(identifier, label);
        oracle.append(identifier, label);
      } else {
        ASSERT_EQ(cache.storeChange(identifier, label), oracle.storeChange(identifier, label))
            << "round " << round << " of seed " << random.seed();
      }
    }
    ASSERT_EQ(cache.identifiers(), oracle.identifiers())
        << "round " << round << " of seed " << random.seed();
    ASSERT_EQ(cache.labels(), oracle.labels()) << "round " << round << " of seed " << random.seed();
  }
}

double costOfLabels(const std::vector<std::string>& identifiers) {
  topo::NodeLabelCache cache;
  return support::costOf([&] {
    for (const std::string& identifier : identifiers) {
      cache.append(identifier, "label");
      EXPECT_FALSE(cache.storeChange(identifier, "label"));
    }
  });
}

TEST(TopoNodeLabelCacheProperty, FindsIdentifiersThatCollideInAPlainHashAsQuickly) {
  const double usual = costOfLabels(support::ordinaryTexts(3000));
  EXPECT_PRED2(support::isComparable, costOfLabels(support::collidingTexts(3000)), usual);
}

}  // namespace
