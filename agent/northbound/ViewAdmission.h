// Admission of views, and of other operations with large replies: how many are computed at the same
// time, and how much memory those in progress may take.

#ifndef AGENT_NORTHBOUND_VIEWADMISSION_H
#define AGENT_NORTHBOUND_VIEWADMISSION_H

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <functional>
#include <list>
#include <memory>
#include <utility>

#include "agent/base/RefusalLog.h"
#include "sync/Mutex.h"

namespace agent {

struct ViewLimits {
  std::size_t views = 4;                        // that are computed at the same time
  std::size_t memory = std::size_t{256} << 20;  // bytes, of all views in progress
  std::chrono::milliseconds patience{20000};    // how long a view waits for its turn
};

// A view is in progress from its admission until its reply was sent. Views wait in the order of
// their arrival. The first that waits is admitted when
//   - fewer than ViewLimits::views are computed, and
//   - the views in progress and this one together need at most ViewLimits::memory, or no other is
//   in
//     progress, and
//   - the process may allocate what the views that are computed and this one need.
//
// Thread-safety: any thread.
class ViewAdmission {
 public:
  // Whether the process may allocate so many bytes more. Called from any thread.
  using Allows = std::function<bool(std::size_t bytes)>;

  // `subject` names in the log what is admitted; borrowed.
  ViewAdmission(const ViewLimits& limits, Allows allows, RefusalLog::Clock clock,
                const char* subject = "a view");

  ViewAdmission(const ViewAdmission&) = delete;
  ViewAdmission& operator=(const ViewAdmission&) = delete;

  // The place of a view in progress, given back by the destructor. The admission outlives it.
  class Pass {
   public:
    Pass() = default;
    Pass(Pass&& other) noexcept { swap(other); }
    Pass& operator=(Pass&& other) noexcept {
      Pass(std::move(other)).swap(*this);
      return *this;
    }
    Pass(const Pass&) = delete;
    Pass& operator=(const Pass&) = delete;
    ~Pass();

    // The view is computed and holds so many bytes until its reply was sent. REQUIRES: admitted.
    void computed(std::size_t bytes);

   private:
    friend class ViewAdmission;

    Pass(ViewAdmission& admission, std::size_t bytes) : admission_(&admission), bytes_(bytes) {}
    void swap(Pass& other) noexcept;

    ViewAdmission* admission_ = nullptr;
    std::size_t bytes_ = 0;
    bool computing_ = true;
  };

  // Admits a view whose computation needs so many bytes. Waits for its turn. Throws
  // CORBA::NO_RESOURCES when memory is short although no view is in progress or when the wait takes
  // too long, CORBA::TRANSIENT when the admission is closed.
  Pass admit(std::size_t bytes);

  // Ends the waits and refuses all views until the admission is opened again. Views in progress go
  // on. Open at first.
  void close();
  void open();

  // How many views wait.
  std::size_t waiting();

 private:
  struct Waiter {
    std::condition_variable turn;
  };

  enum class Decision { kWaits, kRuns, kNoMemory, kClosed };

  Decision await(MutexLock& lock, std::size_t bytes) REQUIRES(mutex_);
  Decision decide(std::size_t bytes) const REQUIRES(mutex_);
  [[noreturn]] void throwNoResources(std::size_t bytes, Decision decision);
  std::size_t room() const REQUIRES(mutex_);
  void callNext() REQUIRES(mutex_);
  void release(std::size_t bytes, bool computing);

  const ViewLimits limits_;
  const Allows allows_;
  RefusalLog log_;
  const char* const subject_;

  Mutex mutex_;
  std::list<Waiter*> waiting_ GUARDED_BY(mutex_);
  std::size_t inProgress_ GUARDED_BY(mutex_) = 0;
  std::size_t computing_ GUARDED_BY(mutex_) = 0;
  std::size_t computingBytes_ GUARDED_BY(mutex_) =
      0;                                      // that the views that are computed may still allocate
  std::size_t bytes_ GUARDED_BY(mutex_) = 0;  // of all views in progress
  bool closed_ GUARDED_BY(mutex_) = false;
};

// Keeps the pass of a view until the reply was sent. A token of orb::RequestGuard.
class ViewReply {
 public:
  // A token for the request that this thread is about to serve.
  static std::shared_ptr<ViewReply> begin();

  // Moves the pass into the token of this thread's request; drops it when there is none.
  static void keep(ViewAdmission::Pass pass);

 private:
  ViewAdmission::Pass pass_;
};

}  // namespace agent

#endif
