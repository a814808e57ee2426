// Large results: a first batch, and an iterator servant that holds the rest.
//
// One template serves every kind of record. An instance is named by its skeleton, its list type and
// the out type of that list:
//
//   using NodeIteratorTrait = TAIT<POA_TopoManagementManager::NodeIterator_I, NodeList_T,
//                                  NodeList_T_out>::Trait;
//   NodeIteratorTrait::createIterator(list, how_many, nodeList, nodeIt);

#ifndef TOPOMANAGEMENTMGRIMPL_RESULTITERATOR_H
#define TOPOMANAGEMENTMGRIMPL_RESULTITERATOR_H

#include <cerrno>
#include <memory>
#include <mutex>
#include <new>

#include "orb/orb.h"
#include "platform/agent/Failures.h"
#include "platform/agent/TAIteratorHelper.h"
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

// The prefixes differ in their colons; operators' filters know them so.
constexpr topo::LogSite kNoPoaSite{kFile, 213};
constexpr const char* kNoPoa = "[Trait:createIterator]poa is null.";

constexpr topo::LogSite kNoServantSite{kFile, 222};
constexpr const char* kNoServant = "[Trait:createIterator]pTAIterator is null.";

constexpr topo::LogSite kForeignPoaSite{kFile, 251};
constexpr const char* kForeignPoa = "[Trait::createIterator]poa_impl is null.";

constexpr topo::LogSite kCleanupSite{kFile, 257};
constexpr const char* kCleanup = "[Trait::createIterator]cleanup_in_progress is true.";

// Logs why no iterator can be made, and raises it.
inline void refuse(const topo::LogSite& site, const char* text) {
  topo::logText(site, kLogError, text);
  ThrowException(ERR_TOPO_CONVERSION);
}

}  // namespace result_iterator

// What an iterator servant owns, traced at both ends of its life. Servant is the class that derives
// from it, List* and POA* are the two parameters.
template <typename Servant, typename ListPointer, typename PoaPointer>
class RefCount_TwoParameter {
 public:
  RefCount_TwoParameter(const RefCount_TwoParameter&) = delete;
  RefCount_TwoParameter& operator=(const RefCount_TwoParameter&) = delete;

 protected:
  // Takes the list over and keeps a reference of its own to the POA.
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
  CORBA::ULong index = 0;  // of the next record to deliver; guarded by the servant's mutex
  CORBA::ULong remaining;  // what getLength answers; constant once the first batch is delivered
  ListPointer list;        // the whole result, owned; constant
  bool activated =
      false;  // whether the agent's housekeeping knows the servant; constant once it does
};

// The iterator servant. It lives as long as somebody holds a reference: the agent's housekeeping,
// the POA, a request that is being executed.
//
// Thread-safety: operations from any ORB thread; concurrent batches never overlap.
template <typename Trait>
class TAIterator
    : public RefCount_TwoParameter<TAIterator<Trait>, typename Trait::List*, PortableServer::POA*>,
      public virtual Trait::Skeleton {
  using Base =
      RefCount_TwoParameter<TAIterator<Trait>, typename Trait::List*, PortableServer::POA*>;

 public:
  // At most how_many further records; false when nothing remains, which also deactivates the
  // servant. A batch of 0 never ends the iteration. When the copy or the deactivation fails, the
  // next call delivers the same records.
  CORBA::Boolean next_n(CORBA::ULong how_many, typename Trait::OutList records) override {
    return topo::atCorbaEdge([&]() -> CORBA::Boolean {
      auto batch = std::make_unique<typename Trait::List>();
      const bool more = how_many == 0 || fill(*batch, how_many);
      if (!more) {
        end();
      }
      records = batch.release();
      return more;
    });
  }

  // The length of the list less the first batch, however much has been fetched since.
  CORBA::ULong getLength() override {
    return topo::atCorbaEdge([&] { return this->remaining; });
  }

  void destroy() override {
    topo::atCorbaEdge([&] {
      if (this->activated) {
        TAIteratorHelper::deactive_object(this);
      }
    });
  }

  // References made by _this live on the iterator POA.
  PortableServer::POA_ptr _default_POA() override {
    return PortableServer::POA::_duplicate(this->poa.in());
  }

 private:
  friend Trait;

  TAIterator(typename Trait::List* wholeList, PortableServer::POA* iteratorPoa)
      : Base(wholeList, iteratorPoa) {}
  ~TAIterator() override = default;

  // Copies the next batch; false when it was the last. The position changes after the copy, so that
  // a failed copy leaves it alone. A request that arrives behind the last batch, before the servant
  // is deactivated, is refused as it would be after the deactivation.
  bool fill(typename Trait::List& batch, CORBA::ULong how_many) {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (finished_) {
      throw CORBA::OBJECT_NOT_EXIST(0, CORBA::COMPLETED_NO);
    }
    const CORBA::ULong rest = this->list->length() - this->index;
    const bool more = how_many < rest;
    copy(batch, more ? how_many : rest);
    if (more) {
      this->index += how_many;
    }
    finished_ = !more;
    return more;
  }

  // REQUIRES: mutex_ is held.
  void copy(typename Trait::List& batch, CORBA::ULong count) {
    topo::setLength(batch, count);
    for (CORBA::ULong i = 0; i < count; ++i) {
      topo::at(batch, i) = topo::at(*this->list, this->index + i);
    }
  }

  // Deactivates the servant after its last batch. A failure makes the batch available again.
  void end() {
    try {
      destroy();
    } catch (...) {
      const std::lock_guard<std::mutex> lock(mutex_);
      finished_ = false;
      throw;
    }
  }

  std::mutex mutex_;
  bool finished_ = false;  // the last batch was copied; guarded by mutex_
};

// Names the instance of the template for one kind of record.
template <typename IteratorSkeleton, typename RecordList, typename RecordOutList>
struct TAIT {
  struct Trait {
    using Skeleton = IteratorSkeleton;
    using List = RecordList;
    using OutList = RecordOutList;
    using Servant = TAIterator<Trait>;

    // Splits a complete result between the out list (at most how_many records) and an iterator, nil
    // when nothing remains. Takes the list over. A null list gives neither. Raises what
    // ThrowException makes of a failure code.
    template <typename OutIterator>
    static void createIterator(List* wholeList, CORBA::ULong how_many, OutList records,
                               OutIterator iterator);

   private:
    static Servant* makeServant(std::unique_ptr<List> list, PortableServer::POA_ptr poa);
    static bool deliverFirst(Servant& servant, CORBA::ULong how_many, OutList records);
    static void hand(PortableServer::ServantBase_var& owner, Servant& servant);
    static void checkPoa(PortableServer::POA_ptr poa);
  };
};

template <typename IteratorSkeleton, typename RecordList, typename RecordOutList>
template <typename OutIterator>
void TAIT<IteratorSkeleton, RecordList, RecordOutList>::Trait::createIterator(
    List* wholeList, CORBA::ULong how_many, OutList records, OutIterator iterator) {
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
  if (servant == nullptr) {
    return;
  }
  PortableServer::ServantBase_var owner = servant;  // the creation reference
  if (deliverFirst(*servant, how_many, records)) {
    hand(owner, *servant);
  } else {
    servant = nullptr;
    owner = nullptr;
  }
  checkPoa(poa.in());
  if (servant != nullptr) {
    iterator = servant->_this();
  }
}

// Null, with the failure raised, when memory is short.
template <typename IteratorSkeleton, typename RecordList, typename RecordOutList>
auto TAIT<IteratorSkeleton, RecordList, RecordOutList>::Trait::makeServant(
    std::unique_ptr<List> list, PortableServer::POA_ptr poa) -> Servant* {
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

// Whether more remains than the first batch.
template <typename IteratorSkeleton, typename RecordList, typename RecordOutList>
bool TAIT<IteratorSkeleton, RecordList, RecordOutList>::Trait::deliverFirst(Servant& servant,
                                                                            CORBA::ULong how_many,
                                                                            OutList records) {
  const bool more = servant.next_n(how_many, records);
  servant.remaining -= how_many;
  return more;
}

// Hands the creation reference to the agent's housekeeping, which may drop it at once. The owner's
// keeps the servant for the rest of its creation.
template <typename IteratorSkeleton, typename RecordList, typename RecordOutList>
void TAIT<IteratorSkeleton, RecordList, RecordOutList>::Trait::hand(
    PortableServer::ServantBase_var& owner, Servant& servant) {
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

template <typename IteratorSkeleton, typename RecordList, typename RecordOutList>
void TAIT<IteratorSkeleton, RecordList, RecordOutList>::Trait::checkPoa(
    PortableServer::POA_ptr poa) {
  if (!orb::isOrbsOwnPoa(poa)) {
    result_iterator::refuse(result_iterator::kForeignPoaSite, result_iterator::kForeignPoa);
  } else if (orb::isCleanupInProgress(poa)) {
    result_iterator::refuse(result_iterator::kCleanupSite, result_iterator::kCleanup);
  }
}

}  // namespace NS_CORBA

#endif
