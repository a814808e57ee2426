#include "agent/notifications/NotificationIds.h"

#include <algorithm>
#include <exception>
#include <stdexcept>
#include <string>
#include <utility>

#include "agent/base/Log.h"

namespace agent {

NotificationIds::NotificationIds(Reserve reserve, std::uint64_t block)
    : reserve_(std::move(reserve)), block_(std::max<std::uint64_t>(block, 2)) {
  gaplessFrom_ = reserve_(block_);
  end_ = gaplessFrom_ + block_;
  last_ = gaplessFrom_ - 1;
}

std::optional<std::uint64_t> NotificationIds::next() {
  if (!following_ && end_ - last_ - 1 <= block_ / 2) {
    reserveNext();
  }
  const std::uint64_t left = end_ - last_ - 1;
  if (!following_ && left <= 1) {
    last_ = end_ - 1;
    standingIn_ = true;
    return std::nullopt;
  }
  if (left == 0) {
    enterFollowing();
  }
  return ++last_;
}

std::uint64_t NotificationIds::standIn() {
  next();
  gaplessFrom_ = last_ + 1;
  return last_;
}

void NotificationIds::reserveNext() {
  try {
    const std::uint64_t first = reserve_(block_);
    if (first < end_) {
      throw std::logic_error("ids were reserved twice");
    }
    following_ = first;
    failing_ = false;
  } catch (const std::exception& failure) {
    failed(failure.what());
  }
}

// One line for a failure that lasts.
void NotificationIds::failed(const std::string& why) {
  if (!std::exchange(failing_, true)) {
    log(kLogErrors, "no ids for notifications can be reserved: " + why);
  }
}

// The last id of a block that stood for what was missed stands for any number of notifications.
void NotificationIds::enterFollowing() {
  if (*following_ != end_ || std::exchange(standingIn_, false)) {
    gaplessFrom_ = *following_;
  }
  end_ = *following_ + block_;
  last_ = *following_ - 1;
  following_.reset();
}

std::uint64_t NotificationIds::countSince(std::uint64_t id) const {
  return id + 1 < gaplessFrom_ || standingIn_ ? 0 : last_ - id;
}

}  // namespace agent
