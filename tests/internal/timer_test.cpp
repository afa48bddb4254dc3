#include <atomic>
#include <cstddef>
#include <ctime>
#include <memory>
#include <optional>

#include <gtest/gtest.h>

#include "support/timercpp.h"
#include "tests/support/database_test.h"
#include "tests/support/delays.h"

extern "C" int nanosleep(const timespec* wanted, timespec* rest) {
  return ara::per::testing::Delays::OfTheProcess().Sleep(*wanted, rest);
}

namespace ara::per::testing {

static std::atomic<int> calls = 0;  // of each, a digit for the function and one for the data
static int one = 1;
static int two = 2;

template <int kFunction>
void Call(void* data) {
  calls = calls * 100 + kFunction * 10 + (data == nullptr ? 0 : *static_cast<int*>(data));
}

class TimerTest : public ::testing::Test {
 protected:
  TimerTest() {
    calls = 0;
    delays_.Hold(true);
  }

  ~TimerTest() override { delays_.Hold(false); }

  /// The thread has passed its first look at the flag when this returns.
  void ArmUntilAsleep(Timer& timer, const std::shared_ptr<int>& owner = nullptr) {
    const std::size_t before = delays_.Asked().size();
    timer.setTimeout(Call<1>, &one, 30, owner);
    EXPECT_TRUE(WaitUntil([&] { return delays_.Asked().size() > before; }));
  }

  /// Ends so many delays, the oldest first, and waits for all threads that do not sleep.
  void ExpectCallsAfter(std::size_t delays, int expected) {
    for (std::size_t i = 0; i < delays; ++i) {
      delays_.EndOne();
      ++ended_;
    }
    EXPECT_TRUE(WaitUntil([this] {
      const auto sleeping = static_cast<std::ptrdiff_t>(delays_.Asked().size() - ended_);
      return ThreadCount() <= threads_ + sleeping;
    }));
    EXPECT_EQ(calls, expected);
  }

  Delays& delays_ = Delays::OfTheProcess();
  const std::ptrdiff_t threads_ = ThreadCount();
  std::size_t ended_ = 0;
  Timer timer_, other_;
};

TEST_F(TimerTest, ThreadsAreSilencedByStopOrEndOfTheirTimerAndByTheEndOfTheOwner) {
  std::optional<Timer> ending(std::in_place);
  auto owner = std::make_shared<int>();
  Timer owned;
  owned.setTimeout(Call<1>, &one, -1500, owner);  // at once
  ExpectCallsAfter(0, 11);
  ArmUntilAsleep(owned, owner);
  ArmUntilAsleep(timer_);
  ArmUntilAsleep(*ending);
  timer_.stop();
  ending.reset();
  owner.reset();
  other_.setTimeout(Call<2>, &two, 0);
  ExpectCallsAfter(3, 1122);
}

TEST_F(TimerTest, StopSilencesOtherTimersAndArmingOrClearingRevivesForTheLastFunction) {
  ArmUntilAsleep(timer_);
  other_.stop();
  ExpectCallsAfter(1, 0);
  ArmUntilAsleep(timer_);
  timer_.stop();
  timer_.setTimeout(Call<2>, &two, 0);
  ExpectCallsAfter(0, 22);
  ExpectCallsAfter(1, 2221);
  ArmUntilAsleep(timer_);
  timer_.stop();
  timer_.clearStopped();
  other_.setTimeout(Call<3>, &two, 0);
  ExpectCallsAfter(0, 222132);
  ExpectCallsAfter(1, 22213231);
}

}  // namespace ara::per::testing
