// Splits a large result into a first batch and an iterator servant that delivers the rest.
//
// The template serves every kind of record. An instance has three parameters: the skeleton, the
// list type and the out type of the list:
//
//   using NodeIteratorTrait = TAIT<POA_TopoManagementManager::NodeIterator_I, NodeList_T,
//                                  NodeList_T_out>::Trait;
//   NodeIteratorTrait::createIterator(list, how_many, nodeList, nodeIt);

#ifndef TOPOMANAGEMENTMGRIMPL_RESULTITERATOR_H
#define TOPOMANAGEMENTMGRIMPL_RESULTITERATOR_H

#include <cerrno>
#include <memory>
#include <new>

#include "orb/orb.h"
#include "platform/agent/Failures.h"
#include "platform/agent/TAIteratorHelper.h"
#include "sync/Mutex.h"
#include "topo/Log.h"
#include "topo/TmfRecords.h"
#include "topomanagementmgrimpl/CorbaEdge.h"

namespace NS_CORBA {

namespace result_iterator {

constexpr const char* kFile = "topomanagementmgrimpl";

constexpr topo::LogSite kHolderMadeSite{kFile, 96};
constexpr const char* kHolderMade = "[ RefCount_TwoParameter]  ref_count!";

constexpr topo::LogSite kHolderDestroyedSite{kFile, 101};
constexpr const char* kHolderDestroyed =
    "[ ~RefCount_TwoParameter]  Reference count associated object destroyed!";

// The prefixes differ in the number of colons; operators filter for these texts.
constexpr topo::LogSite kNoPoaSite{kFile, 213};
constexpr const char* kNoPoa = "[Trait:createIterator]poa is null.";

constexpr topo::LogSite kNoServantSite{kFile, 222};
constexpr const char* kNoServant = "[Trait:createIterator]pTAIterator is null.";

constexpr topo::LogSite kForeignPoaSite{kFile, 251};
constexpr const char* kForeignPoa = "[Trait::createIterator]poa_impl is null.";

constexpr topo::LogSite kCleanupSite{kFile, 257};
constexpr const char* kCleanup = "[Trait::createIterator]cleanup_in_progress is true.";

// Logs the reason why there is no iterator, then throws the failure.
inline void logAndThrow(const topo::LogSite& site, const char* text) {
  topo::logText(site, kLogError, text);
  ThrowException(ERR_TOPO_CONVERSION);
}

}  // namespace result_iterator

// Base of the iterator servant: owns the list and a reference to the POA, and logs a trace in the
// constructor and in the destructor. Servant is the derived class.
// Thread-safety: see TAIterator. Errors: the constructor passes the exceptions of the log.
template <typename Servant, typename ListPointer, typename PoaPointer>
class RefCount_TwoParameter {
 public:
  RefCount_TwoParameter(const RefCount_TwoParameter&) = delete;
  RefCount_TwoParameter& operator=(const RefCount_TwoParameter&) = delete;

 protected:
  // Takes ownership of the list and duplicates the POA reference.
  RefCount_TwoParameter(ListPointer wholeList, PoaPointer iteratorPoa)
      : poa(PortableServer::POA::_duplicate(iteratorPoa)),
        remaining(wholeList->length()),
        list(wholeList) {
    topo::logText(result_iterator::kHolderMadeSite, kLogTrace, result_iterator::kHolderMade);
  }

  ~RefCount_TwoParameter() {
    topo::logTextQuietly(result_iterator::kHolderDestroyedSite, kLogTrace,
                         result_iterator::kHolderDestroyed);
    delete list;
    list = nullptr;
  }

  const PortableServer::POA_var poa;
  CORBA::ULong index = 0;  // position of the next record to deliver; guarded by TAIterator::mutex_
  CORBA::ULong remaining;  // the result of getLength; constant after the first batch
  ListPointer list;        // the complete result, owned; the records before `index` are empty
  bool activated = false;  // registered with the agent; constant after createIterator
};

// The iterator servant.
//
// Thread-safety: any ORB thread; concurrent batches never overlap.
// Ownership: reference-counted. The agent's housekeeping, the POA and every running request have a
// reference; the last release deletes the servant and its list.
// Errors: CORBA system exceptions reach the client; any other exception ends the process.
template <typename Trait>
class TAIterator
    : public RefCount_TwoParameter<TAIterator<Trait>, typename Trait::List*, PortableServer::POA*>,
      public virtual Trait::Skeleton {
  using Base =
      RefCount_TwoParameter<TAIterator<Trait>, typename Trait::List*, PortableServer::POA*>;

 public:
  // Delivers the next how_many records, or fewer at the end. Returns whether records remain; the
  // last batch deactivates the servant. how_many == 0 delivers an empty list and returns true.
  // When the batch or the deactivation fails, the next call delivers the same records again. Throws
  // OBJECT_NOT_EXIST after the last batch.
  CORBA::Boolean next_n(CORBA::ULong how_many, typename Trait::OutList records) override {
    return topo::atCorbaEdge([&]() -> CORBA::Boolean {
      auto batch = std::make_unique<typename Trait::List>();
      const bool more = how_many == 0 || fill(*batch, how_many);
      if (!more) {
        end(*batch);
      }
      records = batch.release();
      return more;
    });
  }

  // The length of the list less the first batch. Later batches do not change the result.
  CORBA::ULong getLength() override {
    return topo::atCorbaEdge([&] { return this->remaining; });
  }

  // Asks the agent to deactivate the servant, each time that it is called.
  void destroy() override {
    topo::atCorbaEdge([&] {
      if (this->activated) {
        TAIteratorHelper::deactive_object(this);
      }
    });
  }

  // The POA on which _this() activates the servant.
  PortableServer::POA_ptr _default_POA() override {
    return PortableServer::POA::_duplicate(this->poa.in());
  }

 private:
  friend Trait;

  TAIterator(typename Trait::List* wholeList, PortableServer::POA* iteratorPoa)
      : Base(wholeList, iteratorPoa) {}
  ~TAIterator() override = default;

  // Moves the next batch out of the list. Returns whether records remain. `index` changes at the
  // end, so a failure changes nothing. A request between the last batch and the end of the
  // deactivation gets OBJECT_NOT_EXIST, as it does after the deactivation.
  bool fill(typename Trait::List& batch, CORBA::ULong how_many) {
    const MutexLock lock(mutex_);
    if (finished_) {
      throw CORBA::OBJECT_NOT_EXIST(0, CORBA::COMPLETED_NO);
    }
    const CORBA::ULong rest = this->list->length() - this->index;
    const bool more = how_many < rest;
    take(batch, more ? how_many : rest);
    if (more) {
      this->index += how_many;
    }
    finished_ = !more;
    return more;
  }

  // Moves records, because each record is delivered once.
  void take(typename Trait::List& batch, CORBA::ULong count) REQUIRES(mutex_) {
    topo::setLength(batch, count);
    CORBA::ULong taken = 0;
    try {
      for (; taken < count; ++taken) {
        topo::moveRecord(topo::at(*this->list, this->index + taken), topo::at(batch, taken));
      }
    } catch (...) {
      putBack(batch, taken);
      throw;
    }
  }

  // The inverse of take().
  void putBack(typename Trait::List& batch, CORBA::ULong count) REQUIRES(mutex_) {
    for (CORBA::ULong i = 0; i < count; ++i) {
      topo::moveRecord(topo::at(batch, i), topo::at(*this->list, this->index + i));
    }
  }

  // Deactivates the servant after the last batch. When that fails, the batch can be fetched again.
  void end(typename Trait::List& batch) {
    try {
      destroy();
    } catch (...) {
      const MutexLock lock(mutex_);
      putBack(batch, batch.length());
      finished_ = false;
      throw;
    }
  }

  Mutex mutex_;
  bool finished_ GUARDED_BY(mutex_) = false;  // the last batch has been taken
};

// Names the iterator of one kind of record: skeleton, list type and out type of the list. A member
// of Trait serves all threads and keeps no state.
template <typename IteratorSkeleton, typename RecordList, typename RecordOutList>
struct TAIT {
  struct Trait {
    using Skeleton = IteratorSkeleton;
    using List = RecordList;
    using OutList = RecordOutList;
    using Servant = TAIterator<Trait>;

    // Returns the first how_many records of a complete result in `records`, and the rest through an
    // iterator, which stays nil when no record remains. Takes ownership of wholeList. A null list
    // gives neither. Errors: throws the exception of a failure code (ThrowException), and passes
    // CORBA system exceptions on.
    template <typename OutIterator>
    static void createIterator(List* wholeList, CORBA::ULong how_many, OutList records,
                               OutIterator iterator) {
      std::unique_ptr<List> list(wholeList);
      records = static_cast<List*>(nullptr);
      if (!list) {
        return;
      }
      if (how_many >= list->length()) {
        records = list.release();
        return;
      }
      const PortableServer::POA_var poa = TAIteratorHelper::getIteratorPoa();
      if (CORBA::is_nil(poa)) {
        topo::logText(result_iterator::kNoPoaSite, kLogError, result_iterator::kNoPoa);
        list.reset();
        ThrowException(ERR_TOPO_CONVERSION);
        return;
      }
      Servant* servant = makeServant(std::move(list), poa.in());
      if (servant != nullptr) {
        startIterator(servant, poa.in(), how_many, records, iterator);
      }
    }

   private:
    // Takes over the creation reference of the servant.
    template <typename OutIterator>
    static void startIterator(Servant* servant, PortableServer::POA_ptr poa, CORBA::ULong how_many,
                              OutList records, OutIterator iterator) {
      PortableServer::ServantBase_var owner = servant;
      if (deliverFirst(*servant, how_many, records)) {
        registerServant(owner, *servant);
      } else {
        // Unreachable: how_many is less than the length here, so records remain. Without this
        // branch, a deliverFirst that disagreed would leave an iterator without records.
        servant = nullptr;
        owner = nullptr;
      }
      // After the registration, because clients and operators know this order: a POA that is
      // refused leaves the servant registered and the first batch in `records`, and the agent's
      // housekeeping ends the servant.
      checkPoa(poa);
      if (servant != nullptr) {
        iterator = servant->_this();
      }
    }

    // Returns null when memory is short, after ThrowException.
    static Servant* makeServant(std::unique_ptr<List> list, PortableServer::POA_ptr poa) {
      auto* servant = new (std::nothrow) Servant(list.get(), poa);
      if (servant == nullptr) {
        errno = ENOMEM;
        topo::logText(result_iterator::kNoServantSite, kLogError, result_iterator::kNoServant);
        list.reset();
        ThrowException(ERR_TOPO_CONVERSION);
        return nullptr;
      }
      static_cast<void>(list.release());
      return servant;
    }

    // Fills the first batch. Returns whether records remain.
    static bool deliverFirst(Servant& servant, CORBA::ULong how_many, OutList records) {
      const bool more = servant.next_n(how_many, records);
      servant.remaining -= how_many;
      return more;
    }

    // Gives the creation reference to the agent's housekeeping, which may drop the reference at
    // once. `owner` has a second reference, so the servant lives until createIterator returns.
    static void registerServant(PortableServer::ServantBase_var& owner, Servant& servant) {
      servant.activated = true;
      servant._add_ref();
      PortableServer::ServantBase_var handed = &servant;
      const CORBA::ULong code = TAIteratorHelper::add_Iterator(&servant);
      if (code != 0) {
        handed = nullptr;
        owner = nullptr;
        ThrowException(code);
      }
      static_cast<void>(handed._retn());
    }

    static void checkPoa(PortableServer::POA_ptr poa) {
      if (!orb::isOrbsOwnPoa(poa)) {
        result_iterator::logAndThrow(result_iterator::kForeignPoaSite,
                                     result_iterator::kForeignPoa);
      } else if (orb::isCleanupInProgress(poa)) {
        result_iterator::logAndThrow(result_iterator::kCleanupSite, result_iterator::kCleanup);
      }
    }
  };
};

}  // namespace NS_CORBA

#endif
