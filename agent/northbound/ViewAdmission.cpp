#include "agent/northbound/ViewAdmission.h"

#include <string>

#include "orb/orb.h"

namespace agent {
namespace {

thread_local std::weak_ptr<ViewReply> threadsReply;

std::string inMegabytes(std::size_t bytes) {
  return std::to_string(bytes / 1000000) + " MB";
}

}  // namespace

ViewAdmission::ViewAdmission(const ViewLimits& limits, Allows allows, RefusalLog::Clock clock,
                             const char* subject)
    : limits_(limits), allows_(std::move(allows)), log_(std::move(clock)), subject_(subject) {}

ViewAdmission::Pass::~Pass() {
  if (admission_ != nullptr) {
    admission_->release(bytes_, computing_);
  }
}

void ViewAdmission::Pass::swap(Pass& other) noexcept {
  std::swap(admission_, other.admission_);
  std::swap(bytes_, other.bytes_);
  std::swap(computing_, other.computing_);
}

void ViewAdmission::Pass::computed(std::size_t bytes) {
  const MutexLock lock(admission_->mutex_);
  --admission_->computing_;
  admission_->computingBytes_ -= bytes_;
  admission_->bytes_ += bytes - bytes_;
  computing_ = false;
  bytes_ = bytes;
  admission_->callNext();
}

void ViewAdmission::release(std::size_t bytes, bool computing) {
  const MutexLock lock(mutex_);
  --inProgress_;
  ++ended_;
  bytes_ -= bytes;
  if (computing) {
    --computing_;
    computingBytes_ -= bytes;
  }
  callNext();
}

ViewAdmission::Pass ViewAdmission::admit(std::size_t bytes) {
  MutexLock lock(mutex_);
  const Decision decision = await(lock, bytes);
  callNext();
  if (decision == Decision::kClosed) {
    throw CORBA::TRANSIENT(0, CORBA::COMPLETED_NO);
  }
  if (decision != Decision::kRuns) {
    ++refused_;
    lock.unlock();
    throwNoResources(bytes, decision);
  }
  ++inProgress_;
  ++computing_;
  computingBytes_ += bytes;
  bytes_ += bytes;
  return {*this, bytes};
}

ViewAdmission::Decision ViewAdmission::await(MutexLock& lock, std::size_t bytes) {
  Decision decision = Decision::kWaits;
  Waiter waiter;
  const auto place = waiting_.insert(waiting_.end(), &waiter);
  waiter.turn.wait_for(lock.native(), limits_.patience, [&]() REQUIRES(mutex_) {
    decision = closed_                       ? Decision::kClosed
               : waiting_.front() == &waiter ? decide(bytes)
                                             : Decision::kWaits;
    return decision != Decision::kWaits;
  });
  waiting_.erase(place);
  return decision;
}

ViewAdmission::Decision ViewAdmission::decide(std::size_t bytes) const {
  if (computing_ >= limits_.views || (inProgress_ > 0 && bytes > room())) {
    return Decision::kWaits;
  }
  if (allows_(computingBytes_ + bytes)) {
    return Decision::kRuns;
  }
  return inProgress_ > 0 ? Decision::kWaits : Decision::kNoMemory;
}

// The part of the limit that the views in progress do not use.
std::size_t ViewAdmission::room() const {
  return bytes_ < limits_.memory ? limits_.memory - bytes_ : 0;
}

void ViewAdmission::throwNoResources(std::size_t bytes, Decision decision) {
  log_.refused(std::string(subject_) + " that needs " + inMegabytes(bytes) + " is refused: " +
               (decision == Decision::kNoMemory ? "memory is short" : "too many wait"));
  throw CORBA::NO_RESOURCES(0, CORBA::COMPLETED_NO);
}

void ViewAdmission::callNext() {
  if (!waiting_.empty()) {
    waiting_.front()->turn.notify_one();
  }
}

void ViewAdmission::close() {
  const MutexLock lock(mutex_);
  closed_ = true;
  for (Waiter* const waiter : waiting_) {
    waiter->turn.notify_one();
  }
}

void ViewAdmission::open() {
  const MutexLock lock(mutex_);
  closed_ = false;
}

std::size_t ViewAdmission::waiting() {
  const MutexLock lock(mutex_);
  return waiting_.size();
}

ViewAdmission::Load ViewAdmission::load() {
  const MutexLock lock(mutex_);
  return {inProgress_, ended_, waiting_.size(), bytes_, refused_};
}

std::shared_ptr<ViewReply> ViewReply::begin() {
  auto reply = std::make_shared<ViewReply>();
  threadsReply = reply;
  return reply;
}

void ViewReply::keep(ViewAdmission::Pass pass) {
  if (const std::shared_ptr<ViewReply> reply = threadsReply.lock()) {
    reply->pass_ = std::move(pass);
  }
}

}  // namespace agent
