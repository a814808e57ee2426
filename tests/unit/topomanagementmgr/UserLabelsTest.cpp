#include "topomanagementmgr/UserLabels.h"

#include <gtest/gtest.h>

#include <mutex>
#include <stdexcept>
#include <vector>

#include "platform/domain/DomainRecords.h"
#include "tests/support/TemporaryDirectory.h"
#include "topomanagementmgr/UserlabelMap.h"

namespace {

using Lines = std::vector<std::string>;

// The calls of the map and of the mutex below, in order.
Lines& steps() {
  static auto& lines = *new Lines;
  return lines;
}

class RecordingMutex {
 public:
  void lock() { steps().emplace_back("lock"); }
  void unlock() { steps().emplace_back("unlock"); }
};

// A map with one key.
class RecordingMap {
 public:
  explicit RecordingMap(const std::string& fileName) { steps().push_back("made of " + fileName); }

  void GetValue(std::string& value, const std::string& key) {
    steps().push_back("asked for " + key);
    if (key == "broken") {
      throw std::runtime_error(key);
    }
    if (key == "known") {
      value = "label";
    }
  }
};

class TopoUserLabels : public testing::Test {
 protected:
  TopoUserLabels() { steps().clear(); }

  topo::UserLabels<RecordingMap, RecordingMutex, std::lock_guard<RecordingMutex>> labels_{"file"};
};

TEST_F(TopoUserLabels, MakeAndSearchTheirMapWithTheMutexLocked) {
  EXPECT_EQ(steps(), Lines{});
  EXPECT_EQ(labels_.labelOf("known"), "label");
  EXPECT_EQ(steps(), (Lines{"lock", "made of file", "asked for known", "unlock"}));
}

TEST_F(TopoUserLabels, KeepTheirMap) {
  labels_.labelOf("known");
  steps().clear();
  EXPECT_EQ(labels_.labelOf("known"), "label");
  EXPECT_EQ(steps(), (Lines{"lock", "asked for known", "unlock"}));
}

TEST_F(TopoUserLabels, AreEmptyWithoutAnEntry) {
  EXPECT_EQ(labels_.labelOf("known"), "label");
  EXPECT_EQ(labels_.labelOf("unknown"), "");
}

TEST_F(TopoUserLabels, ReleaseTheMutexWhenTheMapFails) {
  EXPECT_THROW(labels_.labelOf("broken"), std::runtime_error);
  EXPECT_EQ(steps(), (Lines{"lock", "made of file", "asked for broken", "unlock"}));
}

TEST_F(TopoUserLabels, KeepALabelThatLeftTheFile) {
  const support::TemporaryDirectory dir;
  const std::string file = dir.file("labels.txt");
  topo::UserLabels<UserlabelMap<NS_DOMAIN::TopoNode_T>> labels(file.c_str());
  dir.write("labels.txt", "a;first\nb;other\n");
  EXPECT_EQ(labels.labelOf("a"), "first");
  dir.write("labels.txt", "b;second\n");
  EXPECT_EQ(labels.labelOf("a"), "first");
  EXPECT_EQ(labels.labelOf("b"), "second");
}

}  // namespace
