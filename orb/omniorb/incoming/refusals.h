// Log lines about clients that were refused.

#ifndef ORB_OMNIORB_INCOMING_REFUSALS_H
#define ORB_OMNIORB_INCOMING_REFUSALS_H

#include <optional>
#include <string>

#include "../../episode.h"

namespace orb {

// One kind of refusal: logs its first occurrence, and the number of occurrences when it is over.
//
// Thread-safety: none.
class Refusals {
 public:
  // `overText` follows the number; borrowed.
  explicit Refusals(const char* overText) : overText_(overText) {}

  void add(const std::string& line, Episode::Time now);

  // Logs the end of what is over.
  void endBy(Episode::Time now);

  // When endBy() can have something to log at the earliest.
  std::optional<Episode::Time> end() const { return episode_.end(); }

 private:
  Episode episode_;
  const char* const overText_;
};

}  // namespace orb

#endif
