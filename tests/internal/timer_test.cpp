#include <atomic>
#include <memory>
#include <optional>

#include "support/timercpp.h"
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
  TimerTest() { delays_.Hold(true); }
  ~TimerTest() override { delays_.Hold(false); }

  /// The thread has passed its first look at the flag when this returns.
  void ArmUntilAsleep(Timer& timer, const std::shared_ptr<int>& owner = nullptr) {
    timer.setTimeout(Call<1>, &one, 30, owner);
    delays_.Settled(++armed_);
  }

  /// Ends so many delays, the oldest first, and waits for all threads that do not sleep.
  /// @return the calls since the last time
  int CallsAfter(int delays) {
    for (; delays > 0; --delays) delays_.EndOne();
    delays_.Settled();
    return calls.exchange(0);
  }

  Delays& delays_ = Delays::OfTheProcess();
  std::size_t armed_ = 0;
  Timer timer_, other_;
};

TEST_F(TimerTest, StopOrEndOfATimerOrEndOfTheOwnerSilencesTheirThreads) {
  std::optional<Timer> ending(std::in_place);
  auto owner = std::make_shared<int>();
  ArmUntilAsleep(timer_);
  ArmUntilAsleep(other_, owner);
  ArmUntilAsleep(*ending);
  timer_.stop();
  owner.reset();
  ending.reset();
  other_.setTimeout(Call<2>, &two, 0);
  EXPECT_EQ(CallsAfter(3), 22);
}

TEST_F(TimerTest, StopSilencesOtherTimersAndArmingOrClearingRevivesForTheLastFunction) {
  ArmUntilAsleep(timer_);
  other_.stop();
  EXPECT_EQ(CallsAfter(1), 0);
  ArmUntilAsleep(timer_);
  timer_.stop();
  timer_.setTimeout(Call<2>, &two, -1500);  // at once
  EXPECT_EQ(CallsAfter(0), 22);
  EXPECT_EQ(CallsAfter(1), 21);
  ArmUntilAsleep(timer_);
  timer_.stop();
  timer_.clearStopped();
  other_.setTimeout(Call<3>, &two, 0);
  EXPECT_EQ(CallsAfter(0), 32);
  EXPECT_EQ(CallsAfter(1), 31);
}

}  // namespace ara::per::testing
