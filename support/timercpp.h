#ifndef SUPPORT_TIMERCPP_H_
#define SUPPORT_TIMERCPP_H_

#include <memory>

namespace ara::per {

/// Base of what callbacks get as data. A callback may meet data that was armed for another one, see
/// below, and must not take it for its own.
class TimerData {
 public:
  TimerData() = default;
  TimerData(const TimerData&) = delete;
  TimerData& operator=(const TimerData&) = delete;
  virtual ~TimerData() = default;

  /// @param data  null or a `TimerData`
  /// @return `data` as an `Owner`; null when it is none
  template <class Owner>
  static Owner* as(void* data) {
    return dynamic_cast<Owner*>(static_cast<TimerData*>(data));
  }
};

/// Calls a function once after a delay, on a thread of its own that nothing joins or wakes.
///
/// Intended: the function to call is one pointer for the whole process. The last `setTimeout`
/// anywhere chooses it for every sleeping thread, each of which keeps its own data, and a `stop`
/// anywhere silences them all. So the function may get data that was meant for another one.
///
/// Not guarded: the stop flag and the function are plain memory that the sleeping threads read.
class Timer {
 public:
  Timer();
  Timer(const Timer&) = delete;
  Timer& operator=(const Timer&) = delete;

  /// Keeps the sleeping threads of this timer from calling; other timers are not silenced. A call
  /// that has begun is not waited for.
  ~Timer();

  /// Arms a call of `function` with `data` after `delay` milliseconds; 0 and less do not sleep.
  /// Intended: this also revives threads of the same timer that were stopped and still sleep.
  /// @param function  must accept a null pointer: that is what it gets when the timer is stopped
  ///     in the moment of the call
  /// @param owner  what must live for the call, when given: the call keeps it alive and does not
  ///     come when it is gone
  /// @throws std::system_error when no thread can be started
  void setTimeout(void (*function)(void*), void* data, int delay,
                  const std::shared_ptr<const void>& owner = nullptr);

  /// Silences every sleeping thread of the process; they still sleep to their end.
  void stop();

  /// Forgets an earlier `stop` without arming anything.
  void clearStopped();

 private:
  // Shared with the sleeping threads, which outlive the timer.
  struct State {
    // Plain memory, but read anew each time it is looked at.
    volatile bool stopped_ = false;
  };

  static void call(const State& state, void* data);

  std::shared_ptr<State> state_;
};

}  // namespace ara::per

#endif  // SUPPORT_TIMERCPP_H_
