// Admission of views, and of other operations with large replies: limits the number of views that
// are computed at the same time and the memory of the views in progress.

#ifndef AGENT_NORTHBOUND_VIEWADMISSION_H
#define AGENT_NORTHBOUND_VIEWADMISSION_H

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <list>
#include <memory>
#include <utility>

#include "agent/base/RefusalLog.h"
#include "sync/Mutex.h"

namespace agent {

struct ViewLimits {
  std::size_t views = 4;                        // computed at the same time
  std::size_t memory = std::size_t{256} << 20;  // bytes, of all views in progress
  std::chrono::milliseconds patience{20000};    // timeout of a waiting view
};

// A view is in progress from its admission until its reply was sent. Views wait in a queue. The
// view at the front of the queue is admitted when
//   - fewer than ViewLimits::views views are being computed,
//   - the front view and the views in progress need at most ViewLimits::memory, or no view is in
//     progress, and
//   - the process may allocate the memory of the front view and of the views being computed.
//
// Thread-safety: any thread.
// Ownership: owns its state only; outlives its passes.
// Errors: admit throws CORBA system exceptions and logs a refusal.
class ViewAdmission {
 public:
  // Whether the process may allocate so many more bytes. Called from any thread.
  using Allows = std::function<bool(std::size_t bytes)>;

  // subject: the name of a view in log lines; borrowed.
  ViewAdmission(const ViewLimits& limits, Allows allows, RefusalLog::Clock clock,
                const char* subject = "a view");

  ViewAdmission(const ViewAdmission&) = delete;
  ViewAdmission& operator=(const ViewAdmission&) = delete;

  // The admission of one view. The destructor ends the progress of the view. Thread-safety: one
  // thread at a time. Ownership: borrows the admission, which outlives the pass; a moved pass is
  // empty. Errors: none.
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

    // Ends the computation. bytes: the memory of the reply. REQUIRES: the pass was returned by
    // admit.
    void computed(std::size_t bytes);

   private:
    friend class ViewAdmission;

    Pass(ViewAdmission& admission, std::size_t bytes) : admission_(&admission), bytes_(bytes) {}
    void swap(Pass& other) noexcept;

    ViewAdmission* admission_ = nullptr;
    std::size_t bytes_ = 0;
    bool computing_ = true;
  };

  // Waits until a view that needs so many bytes is admitted. Throws CORBA::NO_RESOURCES after the
  // timeout, or when memory is short and no view is in progress; CORBA::TRANSIENT when the
  // admission is closed.
  Pass admit(std::size_t bytes);

  // Refuses waiting and new views until the admission is opened again. Views in progress continue.
  // A new admission is open.
  void close();
  void open();

  // The number of waiting views.
  std::size_t waiting();

  struct Load {
    std::size_t inProgress = 0;  // views in progress
    std::uint64_t ended = 0;     // views that have ended since the start
    std::size_t waiting = 0;     // views
    std::size_t bytes = 0;       // memory of the views in progress
    std::uint64_t refused = 0;   // views with NO_RESOURCES since the start
  };
  Load load();

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
  std::uint64_t ended_ GUARDED_BY(mutex_) = 0;
  std::uint64_t refused_ GUARDED_BY(mutex_) = 0;
  std::size_t computing_ GUARDED_BY(mutex_) = 0;
  // Memory that the views being computed may still allocate.
  std::size_t computingBytes_ GUARDED_BY(mutex_) = 0;
  std::size_t bytes_ GUARDED_BY(mutex_) = 0;  // of all views in progress
  bool closed_ GUARDED_BY(mutex_) = false;
};

// Owns the pass of a view until the reply was sent. A token of orb::RequestGuard.
//
// Thread-safety: one thread at a time.
// Ownership: the ORB owns the token; a thread-local weak pointer refers to the token.
// Errors: begin throws std::bad_alloc.
class ViewReply {
 public:
  // A token for the request that this thread is about to serve.
  static std::shared_ptr<ViewReply> begin();

  // Moves the pass into the token of this thread's request. Without a token, drops the pass.
  static void keep(ViewAdmission::Pass pass);

 private:
  ViewAdmission::Pass pass_;
};

}  // namespace agent

#endif
