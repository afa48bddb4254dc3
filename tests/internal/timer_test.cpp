#include <poll.h>

#include <atomic>
#include <ctime>
#include <memory>
#include <optional>

#include <gtest/gtest.h>

#include "support/timercpp.h"
#include "tests/support/database_test.h"

static std::atomic<int> sleepsBegun = 0;

/// Stands before the C library's function.
extern "C" int nanosleep(const timespec* wanted, timespec* rest) {
  ++sleepsBegun;
  return ::clock_nanosleep(CLOCK_REALTIME, 0, wanted, rest);
}

namespace ara::per::testing {

constexpr int kShort = 30;   // milliseconds
constexpr int kLater = 120;  // by then a short delay is over

static std::atomic<int> calls = 0;  // of each, a digit for the function and one for the data
static int one = 1;
static int two = 2;

template <int kFunction>
void Call(void* data) {
  calls = calls * 100 + kFunction * 10 + (data == nullptr ? 0 : *static_cast<int*>(data));
}

class TimerTest : public ::testing::Test {
 protected:
  TimerTest() { calls = 0; }

  static void ExpectCalls(int expected) {
    EXPECT_TRUE(WaitUntil([&] { return calls == expected; })) << calls;
  }

  /// The thread has passed its first look at the flag when this returns.
  static void ArmUntilAsleep(Timer& timer) {
    const int before = sleepsBegun;
    timer.setTimeout(Call<1>, &one, kShort);
    EXPECT_TRUE(WaitUntil([&] { return sleepsBegun != before; }));
  }

  Timer timer_, other_;
};

TEST_F(TimerTest, ThreadsAreSilencedByStopOrEndOfTheirTimerAndByTheEndOfTheOwner) {
  std::optional<Timer> ending(std::in_place);
  auto owner = std::make_shared<int>();
  Timer owned;
  owned.setTimeout(Call<1>, &one, -1500, owner);  // at once
  ExpectCalls(11);
  owned.setTimeout(Call<1>, &one, kShort, owner);
  ArmUntilAsleep(timer_);
  ArmUntilAsleep(*ending);
  timer_.stop();
  ending.reset();
  owner.reset();
  other_.setTimeout(Call<2>, &two, kLater);
  ExpectCalls(1122);
}

TEST_F(TimerTest, StopSilencesOtherTimersAndArmingOrClearingRevivesForTheLastFunction) {
  ArmUntilAsleep(timer_);
  other_.stop();
  ::poll(nullptr, 0, kLater);
  ExpectCalls(0);
  ArmUntilAsleep(timer_);
  timer_.stop();
  timer_.setTimeout(Call<2>, &two, 0);
  ExpectCalls(2221);
  ArmUntilAsleep(timer_);
  timer_.stop();
  timer_.clearStopped();
  other_.setTimeout(Call<3>, &two, 0);
  ExpectCalls(22213231);
}

}  // namespace ara::per::testing
