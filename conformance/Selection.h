// The rules that a run checks.

#ifndef CONFORMANCE_SELECTION_H
#define CONFORMANCE_SELECTION_H

#include <set>
#include <string>
#include <vector>

namespace conformance {

// All rules, or the named rules and the rules that they need.
//
// Thread-safety: any thread for const functions. Owns the names. Errors: std::bad_alloc.
class Selection {
 public:
  // No name selects all rules.
  explicit Selection(const std::vector<std::string>& names = {});

  bool has(const std::string& rule) const;

  // Whether the host must load the probe.
  bool needsProbe() const;

  // "RULE,RULE": the selected rules, or "" for all rules.
  std::string list() const;

  // The selected rules that are not in `checked`. Empty when all rules are selected.
  std::vector<std::string> missing(const std::set<std::string>& checked) const;

 private:
  std::set<std::string> rules_;  // empty for all rules
};

}  // namespace conformance

#endif
