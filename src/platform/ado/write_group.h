// WriteGroup: the bookkeeping of a provider that holds its writes in a
// transaction of its own (a group) and commits it at least every 100 ms or
// every 10,000 writes.
//
// The provider begins and commits the transaction itself; the group keeps
// when it began, how many writes it holds and how many went before, and runs
// a timer thread that asks the provider to commit a group that has become
// due while nothing else happens on the connection (the run waits in a
// script, a box, another store).
//
// The caller's mutex guards everything: the provider holds it in each of its
// calls, and the timer thread takes it before it commits, so that it never
// commits in the middle of a write. Every member but the constructor and
// Stop is called with that mutex held.
//
// The timer never waits for that mutex: while the provider is busy (a write
// or a server's round trip holds it), the timer only tries again shortly
// after, since the provider commits a due group itself after its next write.
// A timer queueing for the mutex would be woken at every call the provider
// ends, which costs a system call and a thread switch per record.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <thread>

#include "platform/ado/provider.h"

namespace ketrova::ado {

class WriteGroup {
 public:
  static constexpr auto kAge = std::chrono::milliseconds(100);
  static constexpr std::uint64_t kWrites = 10000;
  // How long a due group may wait for a better moment (see Overdue).
  static constexpr auto kGrace = std::chrono::milliseconds(10);

  // `commit` commits the open group (it calls Committed) or, when it cannot
  // now, leaves it open: the timer asks again (after kGrace the first time,
  // then after another kAge) or when Nudge is called. It raises VbError when
  // the commit fails. `store` names the connection in the messages on stderr.
  WriteGroup(std::recursive_mutex& mutex, std::function<void()> commit, std::string store);
  ~WriteGroup();
  WriteGroup(const WriteGroup&) = delete;
  WriteGroup& operator=(const WriteGroup&) = delete;

  // Starts the timer thread; without it groups are committed only by count,
  // by Flush and on close.
  void StartTimer();
  // Ends the timer thread. Call without holding the mutex, before the
  // provider's own members go.
  void Stop();

  bool IsOpen() const { return open_; }
  // The provider has begun a group; groups are numbered from 1 in the order
  // they begin.
  void Opened();
  // A write of the open group succeeded.
  void Wrote() {
    ++writes_;
    lastWrite_ = number_;
  }
  // A write outside any group succeeded (committed on its own).
  void WroteAlone() {
    ++committed_;
    lastWrite_ = 0;
  }
  // The group of the last write that went through, 0 when it was committed
  // on its own; and what became of a group (the store's text for a lost one
  // in `text`). These answer Provider::LastWriteGroup and FateOfGroup.
  std::uint64_t LastWrite() const { return lastWrite_; }
  Provider::GroupFate Fate(std::uint64_t group, std::string& text) const;
  // Whether the open group should be committed now; Overdue when it has
  // been due for kGrace, so that a provider that put it off for a better
  // moment commits it anyway.
  bool Due() const;
  bool Overdue() const;
  // The group was committed.
  void Committed();
  // The group was rolled back with everything in it (the store failed as a
  // whole: a full disk, a connection gone, a commit that failed): `text` is
  // the store's text; says on stderr how many writes were lost and how many
  // had been committed before.
  void Lost(const std::string& text);
  // Wakes the timer: a commit it could not do may be possible now.
  void Nudge() {
    retry_ = start_;
    Reschedule();
  }

 private:
  void TimerLoop();
  // Tells the timer when the open group falls due (never, when none is open).
  void Reschedule();
  // The timer's turn: commits the group if it is due and the provider is not
  // busy. Answers false when the provider was busy.
  bool TryCommit();

  std::recursive_mutex& mutex_;
  std::function<void()> commit_;
  std::string store_;
  bool open_ = false;
  std::chrono::steady_clock::time_point start_{};
  std::chrono::steady_clock::time_point retry_{};  // not before, after a commit put off
  std::uint64_t writes_ = 0;
  std::uint64_t committed_ = 0;
  std::uint64_t number_ = 0;     // the open group, else the last one
  std::uint64_t lastWrite_ = 0;  // 0: the last write committed alone
  std::map<std::uint64_t, std::string> lost_;
  std::thread timer_;
  // The timer's own state, under timerMutex_: when to look next.
  std::mutex timerMutex_;
  std::condition_variable wake_;
  std::chrono::steady_clock::time_point dueAt_ = std::chrono::steady_clock::time_point::max();
  bool stopping_ = false;
};

}  // namespace ketrova::ado
