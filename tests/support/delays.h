#ifndef TESTS_SUPPORT_DELAYS_H_
#define TESTS_SUPPORT_DELAYS_H_

#include <condition_variable>
#include <cstddef>
#include <ctime>
#include <filesystem>
#include <mutex>
#include <thread>
#include <vector>

#include "tests/support/database_test.h"

namespace ara::per::testing {

// A sanitizer's own thread starts with the first one of the process and must not be counted later.
inline const bool kThreadStarted = (std::thread([] {}).join(), true);

inline std::ptrdiff_t EntryCount(const char* directory) {
  const std::filesystem::directory_iterator entries(directory);
  return std::distance(begin(entries), end(entries));
}

inline std::ptrdiff_t ThreadCount() { return EntryCount("/proc/self/task"); }

/// What stands before the C library's `nanosleep` in this program: while it is held, the delays of
/// the process end when the test says so and not by the clock.
class Delays {
 public:
  static Delays& OfTheProcess() {
    static Delays& delays = *new Delays;  // sleeping threads outlive everything else
    return delays;
  }

  /// Ends all delays that are held and waits for their threads; then starts anew.
  void Hold(bool held) {
    while (held_ && ended_ < Settled().size()) EndOne();
    const std::lock_guard<std::mutex> guard(mutex_);
    held_ = held;
    asked_.clear();
    ended_ = 0;
    threads_ = ThreadCount();
  }

  int Sleep(const timespec& time, timespec* rest) {
    std::unique_lock<std::mutex> guard(mutex_);
    if (!held_) {
      guard.unlock();
      return ::clock_nanosleep(CLOCK_REALTIME, 0, &time, rest) == 0 ? 0 : -1;
    }
    asked_.push_back(static_cast<long>(time.tv_sec) * 1000 + time.tv_nsec / 1000000);
    changed_.wait(guard, [this, number = asked_.size()] { return ended_ >= number; });
    return 0;
  }

  /// The delays so far, in milliseconds, once `count` have begun and all threads but the sleeping
  /// ones have ended.
  std::vector<long> Settled(std::size_t count = 0) {
    EXPECT_TRUE(WaitUntil([&] {
      const std::lock_guard<std::mutex> guard(mutex_);
      const auto asleep = static_cast<std::ptrdiff_t>(asked_.size() - ended_);
      return asked_.size() >= count && ThreadCount() <= threads_ + asleep;
    }));
    const std::lock_guard<std::mutex> guard(mutex_);
    return asked_;
  }

  /// Ends the oldest delay that still lasts.
  void EndOne() {
    const std::lock_guard<std::mutex> guard(mutex_);
    ++ended_;
    changed_.notify_all();
  }

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  bool held_ = false;
  std::vector<long> asked_;
  std::size_t ended_ = 0;
  std::ptrdiff_t threads_ = 0;
};

}  // namespace ara::per::testing

#endif  // TESTS_SUPPORT_DELAYS_H_
