#include "ara/log/sink.h"

#include <strings.h>

#include <array>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

#include "sink_state.h"

namespace ara::log {
namespace {

constexpr LogLevel kDefaultThreshold = LogLevel::kError;

constexpr std::array<const char*, 7> kLevelNames = {"OFF",  "FATAL", "ERROR",  "WARN",
                                                    "INFO", "DEBUG", "VERBOSE"};

LogLevel ThresholdFromEnvironment() {
  const char* const wanted = std::getenv("ARA_LOG_LEVEL");
  if (wanted == nullptr) {
    return kDefaultThreshold;
  }
  for (std::size_t number = 0; number < kLevelNames.size(); ++number) {
    const char digit[] = {static_cast<char>('0' + number), '\0'};
    if (strcasecmp(wanted, kLevelNames[number]) == 0 || std::string_view(wanted) == digit) {
      return static_cast<LogLevel>(number);
    }
  }
  return kDefaultThreshold;
}

constexpr std::uint8_t kNotLookedUp = 255;

struct SinkState {
  std::mutex mutex;
  std::shared_ptr<const Sink> sink;  // guarded by mutex; null means the default
};

SinkState& State() {
  static SinkState& state = *new SinkState;  // never destroyed: lines come until the process ends
  return state;
}

std::shared_ptr<const Sink> CurrentSink() {
  SinkState& state = State();
  const std::lock_guard<std::mutex> lock(state.mutex);
  return state.sink;
}

void WriteToStandardError(LogLevel level, std::string_view contextId, std::string_view line) {
  std::string text;
  text.append("[").append(contextId).append("][");
  text.append(kLevelNames[static_cast<std::size_t>(level)]).append("] ");
  text.append(line).append("\n");
  // One call: it holds the stream's lock, and stderr is not buffered, so it is also one write.
  // There is nobody left to tell of a failure.
  static_cast<void>(std::fwrite(text.data(), 1, text.size(), stderr));
}

/// Marks the current thread as being inside the sink.
class SinkCall {
 public:
  SinkCall() { running_ = true; }
  ~SinkCall() { running_ = false; }
  SinkCall(const SinkCall&) = delete;
  SinkCall& operator=(const SinkCall&) = delete;

  static bool IsRunning() { return running_; }

 private:
  static thread_local bool running_;
};

thread_local bool SinkCall::running_ = false;

}  // namespace

std::atomic<std::uint8_t> internal::threshold{kNotLookedUp};

void SetThreshold(LogLevel threshold) noexcept {
  internal::threshold.store(static_cast<std::uint8_t>(threshold), std::memory_order_relaxed);
}

LogLevel GetThreshold() noexcept {
  std::uint8_t number = internal::threshold.load(std::memory_order_relaxed);
  if (number == kNotLookedUp) {
    const auto atStart = static_cast<std::uint8_t>(ThresholdFromEnvironment());
    // Another thread may have looked, or set a threshold, in between: then that one counts.
    if (internal::threshold.compare_exchange_strong(number, atStart, std::memory_order_relaxed)) {
      number = atStart;
    }
  }
  return static_cast<LogLevel>(number);
}

void SetSink(Sink sink) {
  std::shared_ptr<const Sink> next;
  if (sink) {
    next = std::make_shared<const Sink>(std::move(sink));
  }
  SinkState& state = State();
  const std::lock_guard<std::mutex> lock(state.mutex);
  state.sink.swap(next);  // the lock goes first, then the old function, whose end may log
}

void SendToSink(LogLevel level, std::string_view contextId, std::string_view line) {
  const std::shared_ptr<const Sink> sink = SinkCall::IsRunning() ? nullptr : CurrentSink();
  if (sink == nullptr) {
    return WriteToStandardError(level, contextId, line);
  }
  const SinkCall call;
  (*sink)(level, contextId, line);
}

}  // namespace ara::log
