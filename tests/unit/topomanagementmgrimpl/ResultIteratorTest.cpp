#include "topomanagementmgrimpl/ResultIterator.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <functional>
#include <future>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "tests/fakes/FailingNothrowNew.h"
#include "tests/fakes/OrbFixture.h"
#include "tests/fakes/PoaStandIn.h"

// The two record types. The tests identify a record by its native name.
namespace kinds {

struct Nodes {
  using Skeleton = POA_TopoManagementManager::NodeIterator_I;
  using List = TopoManagementManager::NodeList_T;
  using List_var = TopoManagementManager::NodeList_T_var;
  using List_out = TopoManagementManager::NodeList_T_out;
  using Iterator_ptr = TopoManagementManager::NodeIterator_I_ptr;
  using Iterator_var = TopoManagementManager::NodeIterator_I_var;
  using Iterator_out = TopoManagementManager::NodeIterator_I_out;
};

struct Links {
  using Skeleton = POA_topologicalLink::TopologicalLinkIterator_I;
  using List = topologicalLink::TopologicalLinkList_T;
  using List_var = topologicalLink::TopologicalLinkList_T_var;
  using List_out = topologicalLink::TopologicalLinkList_T_out;
  using Iterator_ptr = topologicalLink::TopologicalLinkIterator_I_ptr;
  using Iterator_var = topologicalLink::TopologicalLinkIterator_I_var;
  using Iterator_out = topologicalLink::TopologicalLinkIterator_I_out;
};

}  // namespace kinds

namespace {

using Lines = std::vector<std::string>;

using fakes::Journal;
using globaldefs::ProcessingFailureException;

const char* const kHolderMade =
    "TaDebug(3, \"[ RefCount_TwoParameter]  ref_count!\") at topomanagementmgrimpl:96 unknown";
const char* const kHolderDestroyed =
    "TaDebug(3, \"[ ~RefCount_TwoParameter]  Reference count associated object destroyed!\") at "
    "topomanagementmgrimpl:101 unknown";
const char* const kNoPoa =
    "TaDebug(1, \"[Trait:createIterator]poa is null.\") at topomanagementmgrimpl:213 unknown";
const char* const kNoServant =
    "TaDebug(1, \"[Trait:createIterator]pTAIterator is null.\") at topomanagementmgrimpl:222 "
    "unknown";
const char* const kForeignPoa =
    "TaDebug(1, \"[Trait::createIterator]poa_impl is null.\") at topomanagementmgrimpl:251 unknown";
const char* const kCleanup =
    "TaDebug(1, \"[Trait::createIterator]cleanup_in_progress is true.\") at "
    "topomanagementmgrimpl:257 unknown";
const char* const kConversionThrown = "ThrowException(1092092090)";

template <typename List>
Lines recordsOf(const List& list) {
  Lines result;
  for (CORBA::ULong i = 0; i < list.length(); ++i) {
    result.emplace_back(list[i].nativeEMSName.in());
  }
  return result;
}

Lines numbers(int first, int behind) {
  Lines result;
  for (int i = first; i < behind; ++i) {
    result.push_back(std::to_string(i));
  }
  return result;
}

template <typename Kind>
class TopoResultIterator : public fakes::OrbFixture {
 protected:
  using List = typename Kind::List;
  using List_var = typename Kind::List_var;
  using List_out = typename Kind::List_out;
  using Iterator_var = typename Kind::Iterator_var;
  using Iterator_out = typename Kind::Iterator_out;
  using Skeleton = typename Kind::Skeleton;
  using Trait = typename NS_CORBA::TAIT<Skeleton, List, List_out>::Trait;
  using Skeleton_var = PortableServer::Servant_var<Skeleton>;

  // A list of records "0", "1", ...; owned by the caller.
  template <typename Made = List>
  static Made* makeList(CORBA::ULong length) {
    auto list = std::make_unique<Made>();
    topo::setLength(*list, length);
    for (CORBA::ULong i = 0; i < length; ++i) {
      (*list)[i].nativeEMSName = CORBA::string_dup(std::to_string(i).c_str());
      topo::setLength((*list)[i].name, 1);
      topo::setPair((*list)[i].name, 0, "Record", std::to_string(i));
    }
    return list.release();
  }

  // As create, for a list of a class derived from List. The caller gets the first batch and deletes
  // the batch through that class.
  template <typename Derived, typename Base = Skeleton>
  std::unique_ptr<Derived> createOf(CORBA::ULong length, CORBA::ULong howMany) {
    List* records = nullptr;
    try {
      NS_CORBA::TAIT<Base, Derived, List_out>::Trait::createIterator(
          makeList<Derived>(length), howMany, records, Iterator_out(iterator_));
    } catch (...) {
      delete static_cast<Derived*>(records);
      throw;
    }
    return std::unique_ptr<Derived>(static_cast<Derived*>(records));
  }

  void create(CORBA::ULong length, CORBA::ULong howMany) {
    Trait::createIterator(makeList(length), howMany, List_out(first_), Iterator_out(iterator_));
  }

  // The failure of a creation; "none" after a success.
  std::string refusal(CORBA::ULong length, CORBA::ULong howMany) {
    try {
      create(length, howMany);
      return "none";
    } catch (const ProcessingFailureException& failure) {
      return failure.errorReason.in();
    } catch (const CORBA::SystemException& failure) {
      return failure._name();
    }
  }

  // The servant of the iterator, with a reference that the test owns.
  static Skeleton_var servant() {
    const auto iterators = fakes::registeredIterators();
    auto* found = dynamic_cast<Skeleton*>(iterators.at(0).in());
    found->_add_ref();
    return found;
  }

  static bool next(const Iterator_var& iterator, CORBA::ULong howMany, Lines& records) {
    List_var batch;
    const bool more = iterator->next_n(howMany, List_out(batch));
    records = recordsOf(batch.in());
    return more;
  }

  static bool next(const Skeleton_var& iterator, CORBA::ULong howMany, Lines& records) {
    List_var batch;
    const bool more = iterator->next_n(howMany, List_out(batch));
    records = recordsOf(batch.in());
    return more;
  }

  Lines first() { return recordsOf(first_.in()); }

  List_var first_;
  Iterator_var iterator_;
};

using Kinds = ::testing::Types<kinds::Nodes, kinds::Links>;
TYPED_TEST_SUITE(TopoResultIterator, Kinds);

template <typename Kind>
using TopoResultIteratorDeathTest = TopoResultIterator<Kind>;
TYPED_TEST_SUITE(TopoResultIteratorDeathTest, Kinds);

// --- Results without an iterator.

TYPED_TEST(TopoResultIterator, GivesNeitherListNorIteratorForANullList) {
  typename TestFixture::List stale;
  typename TestFixture::List* records = &stale;
  TestFixture::Trait::createIterator(nullptr, 3, records,
                                     typename TestFixture::Iterator_out(this->iterator_));
  EXPECT_EQ(records, nullptr);
  EXPECT_TRUE(CORBA::is_nil(this->iterator_));
  EXPECT_EQ(Journal::lines(), Lines{});
}

TYPED_TEST(TopoResultIterator, GivesAnEmptyListForAnEmptyResult) {
  for (const CORBA::ULong howMany : {0U, 1U, 0xFFFFFFFFU}) {
    this->create(0, howMany);
    EXPECT_EQ(this->first_->length(), 0U);
    EXPECT_TRUE(CORBA::is_nil(this->iterator_));
  }
  EXPECT_EQ(Journal::lines(), Lines{});
}

TYPED_TEST(TopoResultIterator, HandsTheWholeListOutWhenTheBatchSizeIsItsLength) {
  typename TestFixture::List* const list = this->makeList(5);
  typename TestFixture::List* records = nullptr;
  TestFixture::Trait::createIterator(list, 5, records,
                                     typename TestFixture::Iterator_out(this->iterator_));
  const std::unique_ptr<typename TestFixture::List> owner(records);
  EXPECT_EQ(records, list);
  EXPECT_EQ(recordsOf(*records), numbers(0, 5));
  EXPECT_TRUE(CORBA::is_nil(this->iterator_));
  EXPECT_EQ(Journal::lines(), Lines{});
}

TYPED_TEST(TopoResultIterator, HandsTheWholeListOutWhenTheBatchIsLarger) {
  this->create(5, 6);
  EXPECT_EQ(this->first(), numbers(0, 5));
  EXPECT_TRUE(CORBA::is_nil(this->iterator_));
}

// --- Creation.

TYPED_TEST(TopoResultIterator, HoldsOneRecordWhenTheBatchIsOneSmaller) {
  this->create(5, 4);
  EXPECT_EQ(this->first(), numbers(0, 4));
  ASSERT_FALSE(CORBA::is_nil(this->iterator_));
  EXPECT_EQ(this->iterator_->getLength(), 1U);
  Lines records;
  EXPECT_FALSE(this->next(this->iterator_, 1, records));
  EXPECT_EQ(records, numbers(4, 5));
}

TYPED_TEST(TopoResultIterator, HoldsEverythingForABatchSizeOfZero) {
  this->create(3, 0);
  EXPECT_EQ(this->first(), Lines{});
  ASSERT_FALSE(CORBA::is_nil(this->iterator_));
  EXPECT_EQ(this->iterator_->getLength(), 3U);
}

TYPED_TEST(TopoResultIterator, CallsThePlatformInThisOrder) {
  this->create(5, 2);
  EXPECT_EQ(Journal::lines(), (Lines{"getIteratorPoa()", kHolderMade, "add_Iterator()"}));
}

TYPED_TEST(TopoResultIterator, DeliversTheFirstBatchBeforeTheServantIsRegistered) {
  Lines delivered;
  fakes::onCall("add_Iterator", 1, [&]() -> CORBA::ULong {
    delivered = this->first();
    return 0;
  });
  this->create(5, 2);
  EXPECT_EQ(delivered, numbers(0, 2));
}

TYPED_TEST(TopoResultIterator, MayBeDestroyedWhileItIsBeingRegistered) {
  fakes::onCall("add_Iterator", 1, []() -> CORBA::ULong {
    dynamic_cast<typename TestFixture::Skeleton*>(fakes::offeredIterator())->destroy();
    return 0;
  });
  this->create(5, 2);
  EXPECT_EQ(Journal::lines(),
            (Lines{"getIteratorPoa()", kHolderMade, "add_Iterator()", "deactive_object()"}));
}

TYPED_TEST(TopoResultIterator, LivesUntilItsCreationEndsWhenTheAgentDropsItAtOnce) {
  fakes::onCall("add_Iterator late", 1, []() -> CORBA::ULong {
    fakes::endIterators();
    return 0;
  });
  this->create(5, 2);
  EXPECT_EQ(Journal::lines(), (Lines{"getIteratorPoa()", kHolderMade, "add_Iterator()"}));
  EXPECT_EQ(this->first(), numbers(0, 2));
  EXPECT_EQ(this->iterator_->getLength(), 3U);
}

TYPED_TEST(TopoResultIterator, IsActivatedOnTheIteratorPoa) {
  this->create(5, 2);
  const PortableServer::ObjectId_var id =
      this->orb().iteratorPoa()->reference_to_id(this->iterator_.in());
  PortableServer::ServantBase_var active = this->orb().iteratorPoa()->id_to_servant(id.in());
  EXPECT_EQ(active.in(), fakes::registeredIterators().at(0).in());
}

// A skeleton whose activation fails.
template <typename Kind>
class Unactivatable : public virtual Kind::Skeleton {
 public:
  typename Kind::Iterator_ptr _this() {
    fakes::calledSilently("_this");
    return Kind::Skeleton::_this();
  }
};

TYPED_TEST(TopoResultIterator, PassesExceptionsOfTheActivation) {
  using Records = typename TestFixture::List;
  const auto raised = [this](auto failure) {
    fakes::resetJournal();
    fakes::onCall("_this", 1, [failure]() -> CORBA::ULong { throw failure; });
    try {
      this->template createOf<Records, Unactivatable<TypeParam>>(5, 2);
    } catch (const CORBA::SystemException& passed) {
      EXPECT_EQ(Journal::lines(), (Lines{"getIteratorPoa()", kHolderMade, "add_Iterator()"}));
      EXPECT_TRUE(CORBA::is_nil(this->iterator_));
      return std::string(passed._name()) + " " + std::to_string(passed.minor());
    }
    return std::string("nothing");
  };
  EXPECT_EQ(raised(CORBA::OBJECT_NOT_EXIST(17, CORBA::COMPLETED_NO)), "OBJECT_NOT_EXIST 17");
  EXPECT_EQ(raised(CORBA::BAD_INV_ORDER(18, CORBA::COMPLETED_NO)), "BAD_INV_ORDER 18");
  EXPECT_EQ(raised(CORBA::NO_RESOURCES(19, CORBA::COMPLETED_NO)), "NO_RESOURCES 19");
  EXPECT_EQ(raised(CORBA::OBJ_ADAPTER(20, CORBA::COMPLETED_NO)), "OBJ_ADAPTER 20");
}

TYPED_TEST(TopoResultIterator, IsTheObjectThatTheAgentMayHaveActivatedAlready) {
  PortableServer::POA_ptr root = this->orb().iteratorPoa()->the_parent();
  const PortableServer::POA_var parent = root;
  CORBA::PolicyList policies;
  policies.length(1);
  policies[0] = parent->create_id_assignment_policy(PortableServer::USER_ID);
  const PortableServer::POA_var poa =
      parent->create_POA("chosen ids", PortableServer::POAManager::_nil(), policies);
  fakes::useIteratorPoa(poa.in());
  const PortableServer::ObjectId_var id = PortableServer::string_to_ObjectId("chosen");
  fakes::onCall("add_Iterator", 1, [&]() -> CORBA::ULong {
    poa->activate_object_with_id(id.in(), fakes::offeredIterator());
    return 0;
  });
  this->create(5, 2);
  const PortableServer::ObjectId_var found = poa->reference_to_id(this->iterator_.in());
  const CORBA::String_var text = PortableServer::ObjectId_to_string(found.in());
  EXPECT_STREQ(text.in(), "chosen");
}

TYPED_TEST(TopoResultIterator, HasTheIteratorPoaForItsDefault) {
  this->create(5, 2);
  const PortableServer::POA_var poa = this->servant()->_default_POA();
  const CORBA::String_var name = poa->the_name();
  EXPECT_STREQ(name.in(), "iterators");
}

TYPED_TEST(TopoResultIterator, IsReferencedByTheAgentAndThePoaOnly) {
  this->create(5, 2);
  EXPECT_EQ(this->servant()->_refcount_value(), 3U);  // the test owns the third reference
}

// --- Batches.

TYPED_TEST(TopoResultIterator, DeliversBatchAfterBatch) {
  this->create(10, 3);
  Lines records;
  EXPECT_TRUE(this->next(this->iterator_, 2, records));
  EXPECT_EQ(records, numbers(3, 5));
  EXPECT_TRUE(this->next(this->iterator_, 1, records));
  EXPECT_EQ(records, numbers(5, 6));
  EXPECT_TRUE(this->next(this->iterator_, 3, records));
  EXPECT_EQ(records, numbers(6, 9));
  EXPECT_FALSE(this->next(this->iterator_, 3, records));
  EXPECT_EQ(records, numbers(9, 10));
}

TYPED_TEST(TopoResultIterator, DeliversWholeRecords) {
  this->create(3, 1);
  typename TestFixture::List_var batch;
  this->iterator_->next_n(2, typename TestFixture::List_out(batch));
  EXPECT_EQ(fakes::printed(batch[0].name), "[Record=1]");
  EXPECT_EQ(fakes::printed(batch[1].name), "[Record=2]");
}

TYPED_TEST(TopoResultIterator, DeliversCopiesThatOutliveIt) {
  this->create(3, 1);
  typename TestFixture::List_var batch;
  EXPECT_FALSE(this->iterator_->next_n(2, typename TestFixture::List_out(batch)));
  EXPECT_EQ(Journal::lines().back(), kHolderDestroyed);
  EXPECT_EQ(recordsOf(batch.in()), numbers(1, 3));
}

TYPED_TEST(TopoResultIterator, HandsItsRecordsOutWithoutCopyingTexts) {
  auto* const list = this->makeList(3);
  const char* const name = (*list)[1].nativeEMSName.in();
  const char* const value = (*list)[1].name[0].value.in();
  TestFixture::Trait::createIterator(list, 1, typename TestFixture::List_out(this->first_),
                                     typename TestFixture::Iterator_out(this->iterator_));
  typename TestFixture::List_var batch;
  EXPECT_TRUE(this->servant()->next_n(1, typename TestFixture::List_out(batch)));
  EXPECT_EQ(batch[0].nativeEMSName.in(), name);
  EXPECT_EQ(batch[0].name[0].value.in(), value);
}

TYPED_TEST(TopoResultIterator, EndsWithABatchOfExactlyTheRest) {
  this->create(5, 2);
  Lines records;
  EXPECT_FALSE(this->next(this->iterator_, 3, records));
  EXPECT_EQ(records, numbers(2, 5));
  EXPECT_EQ(Journal::count("deactive_object"), 1);
  EXPECT_TRUE(fakes::registeredIterators().empty());
  EXPECT_THROW(this->iterator_->getLength(), CORBA::OBJECT_NOT_EXIST);
}

TYPED_TEST(TopoResultIterator, EndsWithABatchOfMoreThanTheRest) {
  this->create(5, 2);
  Lines records;
  EXPECT_FALSE(this->next(this->iterator_, 0xFFFFFFFF, records));
  EXPECT_EQ(records, numbers(2, 5));
  EXPECT_EQ(Journal::count("deactive_object"), 1);
}

TYPED_TEST(TopoResultIterator, ContinuesAfterABatchOfOneLessThanTheRest) {
  this->create(5, 2);
  Lines records;
  EXPECT_TRUE(this->next(this->iterator_, 2, records));
  EXPECT_EQ(Journal::count("deactive_object"), 0);
  EXPECT_FALSE(this->next(this->iterator_, 1, records));
}

TYPED_TEST(TopoResultIterator, NeverEndsWithABatchOfZero) {
  this->create(5, 2);
  Lines records;
  for (int i = 0; i < 3; ++i) {
    EXPECT_TRUE(this->next(this->iterator_, 0, records));
    EXPECT_EQ(records, Lines{});
  }
  EXPECT_FALSE(this->next(this->iterator_, 3, records));
  EXPECT_EQ(records, numbers(2, 5));
}

TYPED_TEST(TopoResultIterator, SaysTrueToABatchOfZeroWhenNothingRemains) {
  this->create(5, 2);
  const auto servant = this->servant();
  Lines records;
  EXPECT_FALSE(this->next(servant, 3, records));
  EXPECT_TRUE(this->next(servant, 0, records));
  EXPECT_EQ(records, Lines{});
}

TYPED_TEST(TopoResultIterator, DoesNotExistBehindItsLastBatch) {
  this->create(5, 2);
  const auto servant = this->servant();
  Lines records;
  EXPECT_FALSE(this->next(servant, 3, records));
  try {
    this->next(servant, 1, records);
    ADD_FAILURE() << "a batch behind the last one";
  } catch (const CORBA::OBJECT_NOT_EXIST& failure) {
    EXPECT_EQ(failure.minor(), 0U);
    EXPECT_EQ(failure.completed(), CORBA::COMPLETED_NO);
  }
  EXPECT_THROW(this->next(this->iterator_, 1, records), CORBA::OBJECT_NOT_EXIST);
  EXPECT_EQ(Journal::count("deactive_object"), 1);
}

// --- Batches that fail.

TYPED_TEST(TopoResultIterator, DeliversTheLastBatchAgainWhenItsDeactivationFailed) {
  this->create(5, 2);
  fakes::onCall("deactive_object", 1, fakes::raiseTransient());
  fakes::onCall("deactive_object", 2, []() -> CORBA::ULong {
    throw ProcessingFailureException(globaldefs::EXCPT_INTERNAL_ERROR, "no housekeeping");
  });
  Lines records;
  EXPECT_THROW(this->next(this->iterator_, 3, records), CORBA::TRANSIENT);
  EXPECT_THROW(this->next(this->iterator_, 7, records), ProcessingFailureException);
  EXPECT_TRUE(this->next(this->iterator_, 2, records));
  EXPECT_EQ(records, numbers(2, 4));
  EXPECT_FALSE(this->next(this->iterator_, 3, records));
  EXPECT_EQ(records, numbers(4, 5));
  EXPECT_EQ(Journal::count("deactive_object"), 3);
  EXPECT_TRUE(fakes::registeredIterators().empty());
}

TYPED_TEST(TopoResultIterator, DeliversWholeRecordsAgainWhenItsDeactivationFailed) {
  this->create(3, 1);
  fakes::onCall("deactive_object", 1, fakes::raiseTransient());
  typename TestFixture::List_var batch;
  const auto servant = this->servant();
  EXPECT_THROW(servant->next_n(2, typename TestFixture::List_out(batch)), CORBA::TRANSIENT);
  EXPECT_FALSE(servant->next_n(2, typename TestFixture::List_out(batch)));
  EXPECT_EQ(fakes::printed(batch[0].name), "[Record=1]");
  EXPECT_EQ(fakes::printed(batch[1].name), "[Record=2]");
  EXPECT_EQ(recordsOf(batch.in()), numbers(1, 3));
}

TYPED_TEST(TopoResultIterator, GivesNoListWhenItsDeactivationFailed) {
  this->create(5, 2);
  fakes::onCall("deactive_object", 1, fakes::raiseTransient());
  typename TestFixture::List* records = nullptr;
  EXPECT_THROW(this->servant()->next_n(3, records), CORBA::TRANSIENT);
  EXPECT_EQ(records, nullptr);
}

// A list in which the access to the record `broken` throws.
template <typename List>
class FragileList : public List {
 public:
  auto& operator[](CORBA::ULong index) {
    if (index == broken) {
      throw CORBA::NO_MEMORY(0, CORBA::COMPLETED_NO);
    }
    return List::operator[](index);
  }

  static CORBA::ULong broken;  // an index
};

template <typename List>
CORBA::ULong FragileList<List>::broken = 0xFFFFFFFF;

TYPED_TEST(TopoResultIterator, DeliversTheSameRecordsAgainWhenABatchFailed) {
  using Fragile = FragileList<typename TestFixture::List>;
  const auto first = this->template createOf<Fragile>(5, 1);
  const auto servant = this->servant();
  const auto fetch = [&](CORBA::ULong howMany, Lines& records) {
    typename TestFixture::List* batch = nullptr;
    const bool more = servant->next_n(howMany, batch);
    records = recordsOf(*batch);
    delete static_cast<Fragile*>(batch);
    return more;
  };
  Lines records;
  for (const CORBA::ULong howMany : {2U, 4U}) {  // with and without remaining records
    Fragile::broken = 2;
    EXPECT_THROW(fetch(howMany, records), CORBA::NO_MEMORY) << howMany;
    Fragile::broken = 0xFFFFFFFF;
  }
  EXPECT_EQ(Journal::count("deactive_object"), 0);
  EXPECT_TRUE(fetch(2, records));
  EXPECT_EQ(records, numbers(1, 3));
  EXPECT_FALSE(fetch(2, records));
  EXPECT_EQ(records, numbers(3, 5));
}

// Fetches batches until the end.
template <typename Next>
Lines fetchAll(const Next& next) {
  Lines mine;
  try {
    for (bool more = true; more;) {
      Lines records;
      more = next(records);
      mine.insert(mine.end(), records.begin(), records.end());
    }
  } catch (const CORBA::OBJECT_NOT_EXIST&) {
    // Expected: another thread has fetched the last batch.
  }
  return mine;
}

// Runs several fetchers at once. Returns the records of all fetchers, sorted.
Lines fetchTogether(const std::vector<std::function<Lines()>>& fetchers) {
  std::atomic<std::size_t> waiting{fetchers.size()};
  std::vector<Lines> fetched(fetchers.size());
  std::vector<std::thread> threads;
  for (std::size_t i = 0; i < fetchers.size(); ++i) {
    threads.emplace_back([&, i] {
      --waiting;
      while (waiting != 0) {
        std::this_thread::yield();
      }
      fetched[i] = fetchers[i]();
    });
  }
  Lines all;
  for (std::size_t i = 0; i < fetchers.size(); ++i) {
    threads[i].join();
    all.insert(all.end(), fetched[i].begin(), fetched[i].end());
  }
  std::sort(all.begin(), all.end());
  return all;
}

Lines sorted(Lines lines) {
  std::sort(lines.begin(), lines.end());
  return lines;
}

TYPED_TEST(TopoResultIterator, NeverDeliversARecordTwiceNorLosesOneWhenManyThreadsAsk) {
  constexpr int kLength = 4000;
  this->create(kLength, 0);
  const auto servant = this->servant();
  std::vector<std::function<Lines()>> fetchers;
  for (unsigned seed = 0; seed < 4; ++seed) {
    fetchers.emplace_back([&, seed] {
      std::mt19937 random(seed);
      std::uniform_int_distribution<CORBA::ULong> size(0, 20);
      return fetchAll([&](Lines& records) {
        return seed % 2 == 0 ? this->next(servant, size(random), records)
                             : this->next(this->iterator_, size(random), records);
      });
    });
  }
  EXPECT_EQ(fetchTogether(fetchers), sorted(numbers(0, kLength)));
}

TYPED_TEST(TopoResultIterator, NeverDeliversARecordTwiceNorLosesOneInBatchesOfOne) {
  constexpr int kLength = 20000;
  this->create(kLength, 0);
  const auto servant = this->servant();
  const std::vector<std::function<Lines()>> fetchers(
      4, [&] { return fetchAll([&](Lines& records) { return this->next(servant, 1, records); }); });
  EXPECT_EQ(fetchTogether(fetchers), sorted(numbers(0, kLength)));
}

// --- The length.

TYPED_TEST(TopoResultIterator, HasTheLengthOfTheRestAfterTheFirstBatch) {
  this->create(10, 3);
  EXPECT_EQ(this->iterator_->getLength(), 7U);
}

TYPED_TEST(TopoResultIterator, NeverChangesItsLength) {
  this->create(10, 3);
  const auto servant = this->servant();
  Lines records;
  for (const CORBA::ULong howMany : {0U, 2U, 1U, 4U}) {
    this->next(servant, howMany, records);
    EXPECT_EQ(servant->getLength(), 7U);
  }
  servant->destroy();
  EXPECT_EQ(servant->getLength(), 7U);
}

// --- The end.

TYPED_TEST(TopoResultIterator, IsDeactivatedWhenItIsDestroyed) {
  this->create(5, 2);
  this->iterator_->destroy();
  EXPECT_EQ(Journal::lines(), (Lines{"getIteratorPoa()", kHolderMade, "add_Iterator()",
                                     "deactive_object()", kHolderDestroyed}));
  EXPECT_THROW(this->iterator_->getLength(), CORBA::OBJECT_NOT_EXIST);
}

TYPED_TEST(TopoResultIterator, AsksForDeactivationAgainWhenItIsDestroyedTwice) {
  this->create(5, 2);
  const auto servant = this->servant();
  servant->destroy();
  servant->destroy();
  EXPECT_EQ(Journal::count("deactive_object"), 2);
}

TYPED_TEST(TopoResultIterator, AsksForDeactivationAgainWhenItIsDestroyedAfterItsLastBatch) {
  this->create(5, 2);
  const auto servant = this->servant();
  Lines records;
  this->next(servant, 3, records);
  servant->destroy();
  EXPECT_EQ(Journal::count("deactive_object"), 2);
}

TYPED_TEST(TopoResultIterator, EndsWhenTheAgentDropsIt) {
  this->create(5, 2);
  fakes::endIterators();
  EXPECT_EQ(Journal::lines().back(), kHolderDestroyed);
  EXPECT_THROW(this->iterator_->getLength(), CORBA::OBJECT_NOT_EXIST);
}

TYPED_TEST(TopoResultIterator, LivesUntilTheLastReferenceIsReleased) {
  this->create(5, 2);
  {
    const auto servant = this->servant();
    this->iterator_->destroy();
    EXPECT_EQ(Journal::lines().back(), "deactive_object()");
  }
  EXPECT_EQ(Journal::lines().back(), kHolderDestroyed);
}

TYPED_TEST(TopoResultIterator, IsDestroyedThoughTheLogFails) {
  this->create(5, 2);
  fakes::onCall("TaDebug", 2, fakes::raiseRuntimeError("disk full"));
  this->iterator_->destroy();
  EXPECT_EQ(Journal::lines().back(), kHolderDestroyed);
}

// --- Creation fails.

TYPED_TEST(TopoResultIterator, IsRefusedWithoutAnIteratorPoa) {
  fakes::useIteratorPoa(PortableServer::POA::_nil());
  EXPECT_EQ(this->refusal(5, 2), "thrown for 1092092090");
  EXPECT_EQ(Journal::lines(), (Lines{"getIteratorPoa()", kNoPoa, kConversionThrown}));
  EXPECT_TRUE(CORBA::is_nil(this->iterator_));
}

TYPED_TEST(TopoResultIterator, GivesNoListWithoutAnIteratorPoa) {
  fakes::useIteratorPoa(PortableServer::POA::_nil());
  typename TestFixture::List stale;
  typename TestFixture::List* records = &stale;
  EXPECT_THROW(
      TestFixture::Trait::createIterator(this->makeList(5), 2, records,
                                         typename TestFixture::Iterator_out(this->iterator_)),
      ProcessingFailureException);
  EXPECT_EQ(records, nullptr);
}

TYPED_TEST(TopoResultIterator, NeedsNoIteratorPoaWhenEverythingFits) {
  fakes::useIteratorPoa(PortableServer::POA::_nil());
  EXPECT_EQ(this->refusal(5, 5), "none");
}

TYPED_TEST(TopoResultIterator, IsRefusedWhenMemoryIsShort) {
  constexpr std::size_t kServantSize = sizeof(typename TestFixture::Trait::Servant);
  int error = 0;
  fakes::onCall("TaDebug", 1, [&]() -> CORBA::ULong {
    error = errno;
    return 0;
  });
  errno = 0;
  {
    const fakes::FailingNothrowNew failing(kServantSize, kServantSize);
    EXPECT_EQ(this->refusal(5, 2), "thrown for 1092092090");
    EXPECT_EQ(fakes::FailingNothrowNew::failures(), 1);
  }
  EXPECT_EQ(error, ENOMEM);
  EXPECT_EQ(Journal::lines(), (Lines{"getIteratorPoa()", kNoServant, kConversionThrown}));
  EXPECT_TRUE(CORBA::is_nil(this->iterator_));
}

TYPED_TEST(TopoResultIterator, IsDestroyedWhenTheAgentRefusesIt) {
  fakes::onCall("add_Iterator", 1, fakes::giveCode(99));
  EXPECT_EQ(this->refusal(5, 2), "thrown for 99");
  EXPECT_EQ(Journal::lines(), (Lines{"getIteratorPoa()", kHolderMade, "add_Iterator()",
                                     kHolderDestroyed, "ThrowException(99)"}));
  EXPECT_TRUE(CORBA::is_nil(this->iterator_));
}

TYPED_TEST(TopoResultIterator, IsDestroyedWhenTheRegistrationRaisesASystemException) {
  fakes::onCall("add_Iterator", 1, fakes::raiseTransient());
  EXPECT_THROW(this->create(5, 2), CORBA::TRANSIENT);
  EXPECT_EQ(Journal::lines(),
            (Lines{"getIteratorPoa()", kHolderMade, "add_Iterator()", kHolderDestroyed}));
  EXPECT_TRUE(CORBA::is_nil(this->iterator_));
}

TYPED_TEST(TopoResultIterator, IsRefusedOnAPoaThatIsNotTheOrbsOwn) {
  fakes::PoaStandIn poa;
  fakes::useIteratorPoa(poa.get());
  EXPECT_EQ(this->refusal(5, 2), "thrown for 1092092090");
  EXPECT_EQ(Journal::lines(), (Lines{"getIteratorPoa()", kHolderMade, "add_Iterator()", kForeignPoa,
                                     kConversionThrown}));
  EXPECT_TRUE(CORBA::is_nil(this->iterator_));
  fakes::resetAgent();
}

TYPED_TEST(TopoResultIterator, KeepsListAndRegistrationOnAPoaThatIsNotTheOrbsOwn) {
  fakes::PoaStandIn poa;
  fakes::useIteratorPoa(poa.get());
  this->refusal(5, 2);
  EXPECT_EQ(this->first(), numbers(0, 2));
  EXPECT_EQ(fakes::registeredIterators().size(), 1U);
  EXPECT_EQ(Journal::count("deactive_object"), 0);
  fakes::resetAgent();
}

TYPED_TEST(TopoResultIterator, IsRefusedOnAPoaThatIsBeingTakenDown) {
  fakes::onCall("add_Iterator", 1, [this]() -> CORBA::ULong {
    this->orb().iteratorPoa()->destroy(false, true);
    return 0;
  });
  EXPECT_EQ(this->refusal(5, 2), "thrown for 1092092090");
  EXPECT_EQ(Journal::lines(), (Lines{"getIteratorPoa()", kHolderMade, "add_Iterator()", kCleanup,
                                     kConversionThrown}));
  EXPECT_TRUE(CORBA::is_nil(this->iterator_));
  EXPECT_EQ(this->first(), numbers(0, 2));
  EXPECT_EQ(fakes::registeredIterators().size(), 1U);
}

TYPED_TEST(TopoResultIterator, IsRefusedDuringAndAfterThePoasDestruction) {
  fakes::onCall("add_Iterator", 1, [this]() -> CORBA::ULong {
    this->orb().iteratorPoa()->destroy(false, false);
    return 0;
  });
  EXPECT_EQ(this->refusal(5, 2), "thrown for 1092092090");
  EXPECT_EQ(Journal::lines(), (Lines{"getIteratorPoa()", kHolderMade, "add_Iterator()", kCleanup,
                                     kConversionThrown}));
  EXPECT_TRUE(CORBA::is_nil(this->iterator_));
}

TYPED_TEST(TopoResultIterator, IsRefusedWhileThePoaWaitsForARunningRequest) {
  this->create(5, 2);
  typename TestFixture::Iterator_var earlier = this->iterator_._retn();
  std::promise<void> running;
  std::promise<void> release;
  fakes::onCall("deactive_object", 1, [&]() -> CORBA::ULong {
    running.set_value();
    release.get_future().wait();
    return 0;
  });
  std::thread client([&] { earlier->destroy(); });
  running.get_future().wait();
  fakes::onCall("add_Iterator", 2, [this]() -> CORBA::ULong {
    this->orb().iteratorPoa()->destroy(false, false);
    return 0;
  });
  Journal::clear();
  EXPECT_EQ(this->refusal(5, 2), "thrown for 1092092090");
  const Lines lines = Journal::lines();
  const bool gone = this->orb().iteratorPoa()->_non_existent();
  release.set_value();
  client.join();
  EXPECT_EQ(lines, (Lines{"getIteratorPoa()", kHolderMade, "add_Iterator()", kCleanup,
                          kConversionThrown}));
  EXPECT_FALSE(gone);
  EXPECT_TRUE(CORBA::is_nil(this->iterator_));
  EXPECT_EQ(this->first(), numbers(0, 2));
}

// --- Ownership of the list.

// A list that counts its live instances.
template <typename List>
class CountedList : public List {
 public:
  CountedList() { ++live; }
  ~CountedList() { --live; }
  CountedList(const CountedList&) = delete;
  CountedList& operator=(const CountedList&) = delete;

  static int live;
};

template <typename List>
int CountedList<List>::live = 0;

template <typename Kind>
class TopoResultIteratorList : public TopoResultIterator<Kind> {
 protected:
  using Counted = CountedList<typename Kind::List>;
  using CountedServant = typename NS_CORBA::TAIT<typename Kind::Skeleton, Counted,
                                                 typename Kind::List_out>::Trait::Servant;

  // The live lists after a creation, successful or not, and after the end of its iterator.
  int listsLeft(CORBA::ULong howMany) {
    try {
      this->template createOf<Counted>(5, howMany);
    } catch (const CORBA::Exception&) {
      ended_ = "refused";
    } catch (const std::runtime_error&) {
      ended_ = "failed";
    }
    fakes::endIterators();
    return Counted::live;
  }

  std::string ended_ = "made";
};

TYPED_TEST_SUITE(TopoResultIteratorList, Kinds);

TYPED_TEST(TopoResultIteratorList, IsReleasedByItsTakerWhenEverythingFits) {
  EXPECT_EQ(this->listsLeft(5), 0);
  EXPECT_EQ(this->ended_, "made");
}

TYPED_TEST(TopoResultIteratorList, IsReleasedWithTheIterator) {
  EXPECT_EQ(this->listsLeft(2), 0);
  EXPECT_EQ(this->ended_, "made");
}

TYPED_TEST(TopoResultIteratorList, IsReleasedWithoutAnIteratorPoa) {
  fakes::useIteratorPoa(PortableServer::POA::_nil());
  EXPECT_EQ(this->listsLeft(2), 0);
  EXPECT_EQ(this->ended_, "refused");
}

TYPED_TEST(TopoResultIteratorList, IsReleasedWhenMemoryIsShort) {
  constexpr std::size_t kServantSize = sizeof(typename TestFixture::CountedServant);
  const fakes::FailingNothrowNew failing(kServantSize, kServantSize);
  EXPECT_EQ(this->listsLeft(2), 0);
  EXPECT_EQ(fakes::FailingNothrowNew::failures(), 1);
  EXPECT_EQ(this->ended_, "refused");
}

TYPED_TEST(TopoResultIteratorList, IsReleasedWhenTheLogOfTheConstructionFails) {
  fakes::onCall("TaDebug", 1, fakes::raiseRuntimeError("disk full"));
  EXPECT_EQ(this->listsLeft(2), 0);
  EXPECT_EQ(this->ended_, "failed");
}

TYPED_TEST(TopoResultIteratorList, IsReleasedWhenTheAgentRefusesTheServant) {
  fakes::onCall("add_Iterator", 1, fakes::giveCode(99));
  fakes::onCall("add_Iterator", 2, fakes::raiseTransient());
  for (const char* const way : {"by a code", "by an exception"}) {
    EXPECT_EQ(this->listsLeft(2), 0) << way;
    EXPECT_EQ(this->ended_, "refused") << way;
  }
}

TYPED_TEST(TopoResultIteratorList, IsReleasedWithTheServantOnAPoaThatIsNotTheOrbsOwn) {
  fakes::PoaStandIn poa;
  fakes::useIteratorPoa(poa.get());
  EXPECT_EQ(this->listsLeft(2), 0);
  EXPECT_EQ(this->ended_, "refused");
  fakes::resetAgent();
}

TYPED_TEST(TopoResultIteratorList, IsReleasedWithTheServantOnAPoaThatIsBeingTakenDown) {
  fakes::onCall("add_Iterator", 1, [this]() -> CORBA::ULong {
    this->orb().iteratorPoa()->destroy(false, true);
    return 0;
  });
  EXPECT_EQ(this->listsLeft(2), 0);
  EXPECT_EQ(this->ended_, "refused");
}

// --- Ownership of the POA reference.

template <typename Kind>
class TopoResultIteratorPoaReference : public TopoResultIterator<Kind> {
 protected:
  TopoResultIteratorPoaReference() { fakes::useIteratorPoa(poa_.get()); }
  ~TopoResultIteratorPoaReference() override { fakes::resetAgent(); }

  // The references to the POA without the reference of the fake agent.
  int references() const { return poa_.references() - 1; }

  fakes::PoaStandIn poa_;
};

TYPED_TEST_SUITE(TopoResultIteratorPoaReference, Kinds);

TYPED_TEST(TopoResultIteratorPoaReference, IsNotTakenWhenEverythingFits) {
  this->create(5, 5);
  EXPECT_EQ(this->references(), 0);
}

TYPED_TEST(TopoResultIteratorPoaReference, IsKeptByTheServantOnly) {
  this->refusal(5, 2);
  EXPECT_EQ(this->references(), 1);
}

TYPED_TEST(TopoResultIteratorPoaReference, IsReleasedWithTheServant) {
  this->refusal(5, 2);
  fakes::endIterators();
  EXPECT_EQ(Journal::lines().back(), kHolderDestroyed);
  EXPECT_EQ(this->references(), 0);
}

TYPED_TEST(TopoResultIteratorPoaReference, IsReleasedWhenTheAgentRefusesTheServant) {
  fakes::onCall("add_Iterator", 1, fakes::giveCode(99));
  this->refusal(5, 2);
  EXPECT_EQ(this->references(), 0);
}

TYPED_TEST(TopoResultIteratorPoaReference, IsReleasedWhenMemoryIsShort) {
  constexpr std::size_t kServantSize = sizeof(typename TestFixture::Trait::Servant);
  const fakes::FailingNothrowNew failing(kServantSize, kServantSize);
  this->refusal(5, 2);
  EXPECT_EQ(this->references(), 0);
}

TYPED_TEST(TopoResultIteratorPoaReference, IsReleasedWhenTheLogOfTheConstructionFails) {
  fakes::onCall("TaDebug", 1, fakes::raiseRuntimeError("disk full"));
  EXPECT_THROW(this->create(5, 2), std::runtime_error);
  EXPECT_EQ(this->references(), 0);
}

// --- Exceptions at the CORBA edge.

TYPED_TEST(TopoResultIterator, LetsSystemExceptionsOfTheDeactivationPass) {
  this->create(5, 2);
  const auto servant = this->servant();
  fakes::onEveryCall("deactive_object", fakes::raiseTransient());
  Lines records;
  EXPECT_THROW(servant->destroy(), CORBA::TRANSIENT);
  EXPECT_THROW(this->next(servant, 3, records), CORBA::TRANSIENT);
}

TYPED_TEST(TopoResultIteratorDeathTest, EndsTheProcessForAForeignExceptionInDestroy) {
  this->create(5, 2);
  fakes::onCall("deactive_object", 1, fakes::raiseRuntimeError("housekeeping is broken"));
  EXPECT_DEATH(this->servant()->destroy(), "housekeeping is broken");
}

TYPED_TEST(TopoResultIteratorDeathTest, EndsTheProcessForAForeignExceptionInTheLastBatch) {
  this->create(5, 2);
  fakes::onCall("deactive_object", 1, fakes::raiseProcessException(7));
  Lines records;
  EXPECT_DEATH(this->next(this->servant(), 3, records), "ProcessException");
}

}  // namespace
