#include "platform/ado/write_group.h"

#include <algorithm>
#include <cassert>
#include <iostream>

#include "support/vb_error.h"

namespace ketrova::ado {

WriteGroup::WriteGroup(std::recursive_mutex& mutex, std::function<void()> commit, std::string store)
    : mutex_(mutex), commit_(std::move(commit)), store_(std::move(store)) {}

WriteGroup::~WriteGroup() {
  Stop();
}

void WriteGroup::StartTimer() {
  if (!timer_.joinable()) timer_ = std::thread([this] { TimerLoop(); });
}

void WriteGroup::Stop() {
  {
    std::lock_guard lock(timerMutex_);
    stopping_ = true;
  }
  wake_.notify_all();
  if (timer_.joinable()) timer_.join();
}

void WriteGroup::Opened() {
  assert(!open_);
  open_ = true;
  ++number_;
  start_ = retry_ = std::chrono::steady_clock::now();
  writes_ = 0;
  Reschedule();
}

void WriteGroup::Reschedule() {
  auto due = open_ ? std::max(start_ + kAge, retry_) : std::chrono::steady_clock::time_point::max();
  {
    std::lock_guard lock(timerMutex_);
    bool sooner = due < dueAt_;
    dueAt_ = due;
    // A later time needs no wake: the timer looks again at the earlier one.
    if (!sooner) return;
  }
  wake_.notify_one();
}

bool WriteGroup::Due() const {
  return open_ && (writes_ >= kWrites || std::chrono::steady_clock::now() - start_ >= kAge);
}

bool WriteGroup::Overdue() const {
  return open_ && std::chrono::steady_clock::now() - start_ >= kAge + kGrace;
}

void WriteGroup::Committed() {
  committed_ += writes_;
  writes_ = 0;
  open_ = false;
  Reschedule();
}

Provider::GroupFate WriteGroup::Fate(std::uint64_t group, std::string& text) const {
  if (open_ && group == number_) return Provider::GroupFate::kOpen;
  if (auto lost = lost_.find(group); lost != lost_.end()) {
    text = lost->second;
    return Provider::GroupFate::kLost;
  }
  return Provider::GroupFate::kCommitted;
}

void WriteGroup::Lost(const std::string& text) {
  assert(open_);
  lost_[number_] = text;
  if (writes_ > 0)
    std::cerr << store_ << ": " << writes_
              << " geschriebene Datensätze sind verloren; übernommen wurden " << committed_
              << ".\n";
  writes_ = 0;
  open_ = false;
  Reschedule();
}

void WriteGroup::TimerLoop() {
  // How soon to try again when the provider was busy.
  constexpr auto kBusyRetry = std::chrono::milliseconds(2);
  std::unique_lock lock(timerMutex_);
  while (!stopping_) {
    if (dueAt_ == std::chrono::steady_clock::time_point::max()) {
      wake_.wait(lock);
    } else if (std::chrono::steady_clock::now() < dueAt_) {
      wake_.wait_until(lock, dueAt_);
    } else {
      lock.unlock();
      bool done = TryCommit();
      lock.lock();
      if (!done && !stopping_) wake_.wait_for(lock, kBusyRetry);
    }
  }
}

bool WriteGroup::TryCommit() {
  std::unique_lock provider(mutex_, std::try_to_lock);
  if (!provider.owns_lock()) return false;
  if (!open_ || std::chrono::steady_clock::now() < std::max(start_ + kAge, retry_)) {
    Reschedule();
    return true;
  }
  try {
    commit_();
  } catch (const VbError&) {
    // The group is lost with the store's text; Fate tells whoever wrote to it.
  }
  // Still open: the provider could not commit now; it is asked again after
  // another while or when nudged.
  if (open_) {
    retry_ = std::chrono::steady_clock::now() + (Overdue() ? kAge : kGrace);
    Reschedule();
  }
  return true;
}

}  // namespace ketrova::ado
