// Decides when freed memory is returned to the system.

#ifndef AGENT_NORTHBOUND_IDLETRIM_H
#define AGENT_NORTHBOUND_IDLETRIM_H

#include <cstdint>
#include <optional>

namespace agent {

// Freed memory is returned after an interval without a view. While views follow each other, the
// next view uses the memory of the last one: a view takes a fifth longer on fresh memory.
//
// Thread-safety: one thread. Ownership: none. Errors: none.
class IdleTrim {
 public:
  // Called after each interval. inProgress: a view is being computed or sent. ended: the number of
  // views and iterators that have ended. Returns true once after the start and once after the last
  // end.
  bool isDue(bool inProgress, std::uint64_t ended) {
    const bool isIdle = !inProgress && ended == last_;
    last_ = ended;
    if (!isIdle || ended == trimmed_) {
      return false;
    }
    trimmed_ = ended;
    return true;
  }

 private:
  std::uint64_t last_ = 0;
  std::optional<std::uint64_t> trimmed_;  // `ended` at the last true result
};

}  // namespace agent

#endif
