#include "support/timercpp.h"

#include <cerrno>
#include <ctime>
#include <thread>

namespace ara::per {
namespace {

void SleepFor(int delay) {
  if (delay <= 0) {
    return;
  }
  timespec rest{};
  rest.tv_sec = delay / 1000;
  rest.tv_nsec = (delay % 1000) * 1000000L;
  while (::nanosleep(&rest, &rest) == -1 && errno == EINTR) {
  }
}

}  // namespace

// Intended: one for all timers of the process, without a guard.
void (*gfunction)(void*) = nullptr;

Timer::Timer() : state_(std::make_shared<State>()) {}

Timer::~Timer() { state_->stopped_ = true; }

void Timer::setTimeout(void (*function)(void*), void* data, int delay,
                       const std::shared_ptr<const void>& owner) {
  state_->stopped_ = false;
  gfunction = function;
  const bool isOwned = owner != nullptr;
  std::thread([state = state_, data, delay, isOwned, weakOwner = std::weak_ptr(owner)] {
    if (state->stopped_) {
      return;
    }
    SleepFor(delay);
    const std::shared_ptr<const void> livingOwner = weakOwner.lock();
    if (!isOwned || livingOwner != nullptr) {
      call(*state, data);
    }
  }).detach();
}

void Timer::stop() {
  state_->stopped_ = true;
  gfunction = nullptr;
}

void Timer::clearStopped() { state_->stopped_ = false; }

void Timer::call(const State& state, void* data) {
  if (state.stopped_) {
    return;
  }
  // Read only now: it is the function of whoever armed or stopped a timer last.
  void (*const function)(void*) = gfunction;
  if (function == nullptr) {
    return;
  }
  function(state.stopped_ ? nullptr : data);
}

}  // namespace ara::per
