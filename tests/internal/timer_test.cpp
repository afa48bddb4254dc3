#include <atomic>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <ctime>
#include <list>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <utility>

#include <gtest/gtest.h>

#include "support/timercpp.h"

namespace {

std::atomic<int> sleepsBegun = 0;

// When set, a sleep is noted and fails: with a rest to sleep the first time, for good the second.
std::atomic<bool> sleepsFail = false;
std::string failedSleeps;

}  // namespace

/// Stands before the C library's function.
extern "C" int nanosleep(const timespec* wanted, timespec* rest) {
  ++sleepsBegun;
  if (sleepsFail) {
    errno = failedSleeps.empty() ? EINTR : EFAULT;
    failedSleeps += std::to_string(wanted->tv_sec) + "." + std::to_string(wanted->tv_nsec) + " ";
    *rest = {0, 700000000};
    return -1;
  }
  errno = ::clock_nanosleep(CLOCK_REALTIME, 0, wanted, rest);
  return errno == 0 ? 0 : -1;
}

namespace ara::per::testing {
namespace {

constexpr int kShort = 30;   // milliseconds
constexpr int kLater = 120;  // by then a short delay is over

/// Data of a timer, which notes the calls that reach it.
class Event {
 public:
  void Happen(char function) {
    const std::lock_guard<std::mutex> guard(mutex_);
    functions_ += function;
    happened_.notify_all();
  }

  /// @return the functions that called, once there are `count` or `limit` milliseconds are over
  std::string Functions(std::size_t count = 1, int limit = 20000) {
    std::unique_lock<std::mutex> guard(mutex_);
    happened_.wait_for(guard, std::chrono::milliseconds(limit),
                       [&] { return functions_.size() >= count; });
    return functions_;
  }

 private:
  std::mutex mutex_;
  std::condition_variable happened_;
  std::string functions_;
};

std::list<Event> events;     // live to the end of the process, for calls that come too late
Event* nullEvent = nullptr;  // stands for null data

class TimerTest : public ::testing::Test {
 protected:
  template <char kName>
  static void Call(void* data) {
    (data == nullptr ? nullEvent : static_cast<Event*>(data))->Happen(kName);
  }

  /// Arms a timer whose thread has passed its first look at the flag when this returns.
  static void ArmUntilAsleep(Timer& timer, Event& event, int delay) {
    const int before = sleepsBegun;
    timer.setTimeout(Call<'a'>, &event, delay);
    while (sleepsBegun == before) {
      std::this_thread::yield();
    }
  }

  Event& event_ = events.emplace_back();
  Event& otherEvent_ = events.emplace_back();
  Timer timer_;
  Timer other_;
};

TEST_F(TimerTest, DelaysOfZeroAndLessCallAtOnceOnANewThread) {
  const int before = sleepsBegun;
  timer_.setTimeout(Call<'a'>, &event_, 0);
  EXPECT_EQ(event_.Functions(), "a");
  timer_.setTimeout(Call<'b'>, &event_, -1500);
  EXPECT_EQ(event_.Functions(2), "ab");
  nullEvent = &otherEvent_;
  timer_.setTimeout(Call<'n'>, nullptr, 0);
  EXPECT_EQ(otherEvent_.Functions(), "n");
  EXPECT_EQ(sleepsBegun, before);
}

TEST_F(TimerTest, SleepsSecondsAndNanosecondsAndGoesOnAfterASignalAlone) {
  sleepsFail = true;
  timer_.setTimeout(Call<'a'>, &event_, 1500);
  EXPECT_EQ(event_.Functions(), "a");
  sleepsFail = false;
  EXPECT_EQ(std::exchange(failedSleeps, ""), "1.500000000 0.700000000 ");
}

TEST_F(TimerTest, FunctionIsTheLastOneOfTheProcessAndDataTheThreadsOwn) {
  ArmUntilAsleep(timer_, event_, kShort);
  other_.setTimeout(Call<'b'>, &otherEvent_, 0);
  EXPECT_EQ(otherEvent_.Functions(), "b");
  EXPECT_EQ(event_.Functions(), "b");
}

TEST_F(TimerTest, StopOrEndOfATimerSilencesItsThreadsEvenIfAnotherIsArmed) {
  Event& gone = events.emplace_back();
  std::optional<Timer> ending(std::in_place);
  ArmUntilAsleep(timer_, event_, kShort);
  ArmUntilAsleep(*ending, gone, kShort);
  timer_.stop();
  ending.reset();
  other_.setTimeout(Call<'b'>, &otherEvent_, kLater);
  EXPECT_EQ(otherEvent_.Functions(), "b");
  EXPECT_EQ(event_.Functions(0) + gone.Functions(0), "");
}

TEST_F(TimerTest, DataIsCalledWithAsLongAsItsOwnerLives) {
  auto owner = std::make_shared<int>();
  timer_.setTimeout(Call<'a'>, &otherEvent_, 0, owner);
  EXPECT_EQ(otherEvent_.Functions(), "a");
  timer_.setTimeout(Call<'a'>, &event_, kShort, owner);
  owner.reset();
  other_.setTimeout(Call<'b'>, &otherEvent_, kLater);
  EXPECT_EQ(otherEvent_.Functions(2), "ab");
  EXPECT_EQ(event_.Functions(0), "");
}

TEST_F(TimerTest, StopOfOneTimerSilencesAnother) {
  ArmUntilAsleep(timer_, event_, kShort);
  other_.stop();
  EXPECT_EQ(event_.Functions(1, kLater), "");
}

TEST_F(TimerTest, ArmingAgainRevivesAStoppedThread) {
  ArmUntilAsleep(timer_, event_, kLater);
  timer_.stop();
  timer_.setTimeout(Call<'b'>, &event_, kShort);
  EXPECT_EQ(event_.Functions(2), "bb");
}

TEST_F(TimerTest, ClearingTheFlagRevivesAStoppedThreadForTheNextFunction) {
  ArmUntilAsleep(timer_, event_, kShort);
  timer_.stop();
  timer_.clearStopped();
  other_.setTimeout(Call<'b'>, &otherEvent_, 0);
  EXPECT_EQ(event_.Functions(), "b");
}

}  // namespace
}  // namespace ara::per::testing
