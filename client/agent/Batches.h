// The records of several replies, without copying them.

#ifndef CLIENT_AGENT_BATCHES_H
#define CLIENT_AGENT_BATCHES_H

#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

#include "orb/orb.h"

namespace topoctl {

// Owns the sequences that calls returned and visits their records in the order of arrival.
//
// Thread-safety: none; concurrent calls of const functions are safe. add() throws std::bad_alloc.
template <typename List>
class Batches {
 public:
  // Takes ownership of a sequence, such as the result of _retn().
  void add(List* batch) {
    batches_.emplace_back(batch);
    size_ += batches_.back()->length();
  }

  std::size_t size() const { return size_; }

  template <typename Visit>
  void forEach(Visit visit) const {
    for (const auto& batch : batches_) {
      for (CORBA::ULong i = 0; i < batch->length(); ++i) {
        visit(std::as_const(*batch)[i]);
      }
    }
  }

 private:
  std::vector<std::unique_ptr<List>> batches_;
  std::size_t size_ = 0;
};

}  // namespace topoctl

#endif
