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
    std::lock_guard lock(mutex_);
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
  wake_.notify_all();
}

bool WriteGroup::Due() const {
  return open_ && (writes_ >= kWrites || std::chrono::steady_clock::now() - start_ >= kAge);
}

void WriteGroup::Committed() {
  committed_ += writes_;
  writes_ = 0;
  open_ = false;
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
}

void WriteGroup::TimerLoop() {
  std::unique_lock lock(mutex_);
  while (!stopping_) {
    if (!open_) {
      wake_.wait(lock);
      continue;
    }
    auto due = std::max(start_ + kAge, retry_);
    if (std::chrono::steady_clock::now() < due) {
      wake_.wait_until(lock, due);
      continue;
    }
    try {
      commit_();
    } catch (const VbError&) {
      // The group is lost with the store's text; Fate tells whoever wrote to it.
    }
    // Still open: the provider could not commit now; it is asked again after
    // another while or when nudged.
    if (open_) retry_ = std::chrono::steady_clock::now() + kAge;
  }
}

}  // namespace ketrova::ado
