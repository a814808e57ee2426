#include "topomanagementmgr/UserlabelMap.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "platform/domain/DomainRecords.h"
#include "tests/property/Random.h"
#include "tests/support/TemporaryDirectory.h"

namespace {

using Map = UserlabelMap<NS_DOMAIN::TopoNode_T>;

constexpr const char* kAbsent = "(absent)";

// The oracle: reads a file byte by byte and keeps every entry; the last entry of a key counts.
class Oracle {
 public:
  void read(const std::string& content) {
    std::string line;
    for (const char byte : content) {
      if (byte == '\n') {
        add(line);
        line.clear();
      } else {
        line += byte;
      }
    }
    if (!line.empty()) {
      add(line);
    }
  }

  std::string find(const std::string& key) const {
    std::string value = kAbsent;
    for (const auto& entry : entries_) {
      if (entry.first == key) {
        value = entry.second;
      }
    }
    return value;
  }

 private:
  void add(const std::string& line) {
    std::string key;
    std::string value;
    bool separated = false;
    for (const char byte : line) {
      if (byte == ';' && !separated) {
        separated = true;
      } else {
        (separated ? value : key) += byte;
      }
    }
    if (separated && key.empty()) {
      return;
    }
    entries_.emplace_back(key, separated ? value : key);
  }

  std::vector<std::pair<std::string, std::string>> entries_;
};

TEST(TopoUserlabelMapProperty, ReadsTheSameEntriesAsThePlainReader) {
  Random random;
  const support::TemporaryDirectory dir;
  for (int round = 0; round < 1500; ++round) {
    SCOPED_TRACE("round " + std::to_string(round) + " of seed " + std::to_string(random.seed()));
    const std::string name = "labels-" + std::to_string(round);
    const std::string fileName = dir.file(name);
    Map map(fileName);
    Oracle oracle;
    for (int edit = random.number(1, 3); edit > 0; --edit) {
      const std::string content = random.text(";;\n\nab \r", 30);
      dir.write(name, content);
      oracle.read(content);
      for (int lookup = 0; lookup < 8; ++lookup) {
        const std::string key = random.text("ab \r;", 2);
        std::string value = kAbsent;
        map.GetValue(value, key);
        ASSERT_EQ(value, oracle.find(key)) << "key '" << key << "' in:\n" << content;
      }
    }
    std::filesystem::remove(fileName);
  }
}

}  // namespace
