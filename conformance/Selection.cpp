#include "conformance/Selection.h"

#include <algorithm>
#include <iterator>

#include "conformance/Check.h"

namespace conformance {
namespace {

struct Need {
  const char* rule;
  const char* other;
};

constexpr Need kNeeds[] = {
    {"unload.iterators", "reload.failed-init"},  // leaves an iterator open at a reload
    {"unload.fini", "unload.servants"},          // writes to the report in fini
};

bool isCheckedWithTheModule(const std::string& rule) {
  return std::any_of(checks().begin(), checks().end(), [&rule](const Check& check) {
    return check.plugin == Plugin::kModule && check.rule == rule;
  });
}

}  // namespace

Selection::Selection(const std::vector<std::string>& names) : rules_(names.begin(), names.end()) {
  for (const Need& need : kNeeds) {
    if (rules_.count(need.rule) != 0) {
      rules_.insert(need.other);
    }
  }
}

bool Selection::has(const std::string& rule) const {
  return rules_.empty() || rules_.count(rule) != 0;
}

bool Selection::needsProbe() const {
  return rules_.empty() || !std::all_of(rules_.begin(), rules_.end(), isCheckedWithTheModule);
}

std::string Selection::list() const {
  std::string text;
  for (const std::string& rule : rules_) {
    text += (text.empty() ? "" : ",") + rule;
  }
  return text;
}

std::vector<std::string> Selection::missing(const std::set<std::string>& checked) const {
  std::vector<std::string> result;
  std::set_difference(rules_.begin(), rules_.end(), checked.begin(), checked.end(),
                      std::back_inserter(result));
  return result;
}

}  // namespace conformance
