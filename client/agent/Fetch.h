// Fetches a whole view: the first batch, then further batches from the iterator.

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

// Receives the number of records that have arrived so far.
using ProgressFunction = std::function<void(std::size_t)>;

// Destroys the agent's iterator when the scope ends early. Owns a separate reference to the
// iterator. Thread-safety: none. The destructor ignores failures of the call.
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
      // The caller handles the first failure already, and the agent reclaims idle iterators.
    }
  }

  IteratorGuard(const IteratorGuard&) = delete;
  IteratorGuard& operator=(const IteratorGuard&) = delete;

  // The iterator has ended, or cannot be reached: the destructor does nothing.
  void forget() { iterator_ = Iterator::_nil(); }

 private:
  typename Iterator::_var_type iterator_;
};

// The agent has ended an iterator before its last batch. Thread-safety, ownership and errors: as
// Failure.
class IteratorEnded : public Failure {
 public:
  explicit IteratorEnded(std::size_t records)
      : Failure(ExitCode::kCallFailed,
                "the iterator ended early, after " + std::to_string(records) +
                    " records: the agent was restarted, reloaded its module, or dropped the "
                    "iterator because it was idle for too long") {}
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
    throw IteratorEnded(batches.size());
  } catch (const CORBA::SystemException& failure) {
    if (orb::isUnreachable(failure)) {
      guard.forget();  // a call of destroy() would wait for another timeout
    }
    throw;
  }
}

// Calls `first(n, list, iterator)`, the operation of a view with the _out arguments of the mapping,
// with howMany, then the iterator with iteratorBatch(howMany) until the view ends. Calls `progress`
// after every batch. Throws IteratorEnded when the iterator ends early, and Failure (kCallFailed)
// when the iterator delivers nothing; exceptions of the calls pass. A failure destroys the
// iterator. Thread-safety: any thread.
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
  guard.forget();  // the last batch ended the iterator
  return batches;
}

}  // namespace topoctl

#endif
