// Gathers a whole result: the first batch of a view and what its iterator holds.

#ifndef CLIENT_AGENT_FETCH_H
#define CLIENT_AGENT_FETCH_H

#include <cstddef>
#include <functional>
#include <string>

#include "client/agent/Batches.h"
#include "client/base/AgentAccess.h"
#include "client/base/Failure.h"
#include "orb/orb.h"

namespace topoctl {

// Is told how many records have arrived so far.
using ProgressFunction = std::function<void(std::size_t)>;

// Destroys the agent's iterator unless that has ended by itself.
template <typename Iterator>
class IteratorGuard {
 public:
  explicit IteratorGuard(typename Iterator::_ptr_type iterator)
      : iterator_(Iterator::_duplicate(iterator)) {}

  ~IteratorGuard() {
    if (CORBA::is_nil(iterator_)) {
      return;
    }
    try {
      iterator_->destroy();
    } catch (...) {
      // A failure is on its way out already, and the agent reclaims idle iterators.
    }
  }

  IteratorGuard(const IteratorGuard&) = delete;
  IteratorGuard& operator=(const IteratorGuard&) = delete;

  void forget() { iterator_ = Iterator::_nil(); }

 private:
  typename Iterator::_var_type iterator_;
};

template <typename List, typename Iterator>
bool fetchBatch(typename Iterator::_ptr_type iterator, std::uint32_t howMany,
                IteratorGuard<Iterator>& guard, Batches<List>& batches) {
  try {
    typename List::_var_type batch;
    const bool more = iterator->next_n(howMany, batch.out());
    if (more && batch->length() == 0) {
      throw Failure(ExitCode::kCallFailed,
                    "the iterator delivers nothing, yet says that more remains");
    }
    batches.add(batch._retn());
    return more;
  } catch (const CORBA::OBJECT_NOT_EXIST&) {
    guard.forget();
    throw Failure(ExitCode::kCallFailed, "the iterator ended early, after " +
                                             std::to_string(batches.size()) +
                                             " records: the agent was restarted, or dropped it "
                                             "because it was idle for too long");
  } catch (const CORBA::SystemException& failure) {
    if (orb::isUnreachable(failure)) {
      guard.forget();  // destroying it would only wait for another time-out
    }
    throw;
  }
}

// `first(n, list, iterator)` is the view's operation, with the mapping's _out arguments; it gets
// howMany as it is, the iterator gets iteratorBatch(howMany). Throws Failure (kCallFailed) when the
// iterator ends early; exceptions of the calls pass. The iterator is destroyed in either case.
template <typename List, typename Iterator, typename First>
Batches<List> fetchAll(std::uint32_t howMany, First first, const ProgressFunction& progress) {
  Batches<List> batches;
  typename List::_var_type list;
  typename Iterator::_var_type iterator;
  first(howMany, list.out(), iterator.out());
  IteratorGuard<Iterator> guard(iterator.in());
  batches.add(list._retn());
  progress(batches.size());
  bool more = !CORBA::is_nil(iterator);
  while (more) {
    more = fetchBatch(iterator.in(), iteratorBatch(howMany), guard, batches);
    progress(batches.size());
  }
  guard.forget();  // its last batch ended it
  return batches;
}

}  // namespace topoctl

#endif
