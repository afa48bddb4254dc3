#ifndef ARA_LOG_LOGGING_H_
#define ARA_LOG_LOGGING_H_

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#define ARA_LOG_EXPORT __attribute__((visibility("default")))

namespace ara::log {

/// How urgent a line is; as a limit, the least urgent level that is still shown. The numbers
/// stand in callers' tables and in the environment: do not renumber.
enum class LogLevel : std::uint8_t {
  kOff = 0,      ///< as a limit: nothing is shown; no line has this level
  kFatal = 1,    ///< the process cannot go on
  kError = 2,    ///< an operation failed
  kWarn = 3,     ///< unexpected, but handled
  kInfo = 4,     ///< a rare event of normal work
  kDebug = 5,    ///< the course of an operation
  kVerbose = 6,  ///< every step
};

class Logger;

namespace internal {

/// The number of the threshold in force, or one above every level as long as nobody has looked at
/// the environment. It is here so that a line that is not shown costs no call.
ARA_LOG_EXPORT extern std::atomic<std::uint8_t> threshold;

}  // namespace internal

/// A line in the making. The pieces given with `<<` are collected and go out as one line at
/// `Flush`, or at the end of the stream's life if pieces are left. The stream of a line that is not
/// shown holds nothing, and each operation on it costs one test.
///
/// One stream belongs to one thread at a time. It may be moved; the stream moved from swallows what
/// it is given. The logger outlives every stream, since loggers live as long as the process.
class ARA_LOG_EXPORT LogStream {
 public:
  LogStream(LogStream&& other) noexcept = default;

  /// Takes over the line of `other`, then sends what this stream still held.
  LogStream& operator=(LogStream&& other) noexcept = default;

  LogStream(const LogStream&) = delete;
  LogStream& operator=(const LogStream&) = delete;

  ~LogStream() = default;

  /// Appends `text`, which ends with a zero byte and is copied; null appends nothing.
  /// @throws std::bad_alloc  only if the line is shown
  LogStream& operator<<(const char* text) {
    if (line_ != nullptr) {
      Append(text);
    }
    return *this;
  }

  /// Sends the pieces so far as one line and starts an empty one; without pieces nothing is sent.
  LogStream& Flush() {
    if (line_ != nullptr) {
      Send();
    }
    return *this;
  }

 private:
  friend class Logger;
  struct Line;

  struct SendAndDelete {
    void operator()(Line* line) const noexcept;
  };

  explicit LogStream(Line* line) noexcept : line_(line) {}

  void Append(const char* text);
  void Send();

  std::unique_ptr<Line, SendAndDelete> line_;  // null for a line that is not shown
};

/// Source of log lines of one context. `CreateLogger` makes it; it lives to the end of the process.
/// A line is shown when its level is neither above the logger's own level nor above the threshold
/// of the process (`SetThreshold`). The level counts at the call of `LogFatal` and its siblings,
/// not at `Flush`. Safe from any thread, also while libraries load and while the process ends.
class ARA_LOG_EXPORT Logger {
 public:
  ~Logger() = default;
  Logger(const Logger&) = delete;
  Logger& operator=(const Logger&) = delete;

  /// Each starts a line of the level in its name. For a line that is not shown this costs a few
  /// nanoseconds: no memory is allocated and no lock is taken.
  /// @throws std::bad_alloc  only if the line is shown
  LogStream LogFatal() const { return Start(LogLevel::kFatal); }
  LogStream LogError() const { return Start(LogLevel::kError); }
  LogStream LogWarn() const { return Start(LogLevel::kWarn); }
  LogStream LogInfo() const { return Start(LogLevel::kInfo); }
  LogStream LogDebug() const { return Start(LogLevel::kDebug); }
  LogStream LogVerbose() const { return Start(LogLevel::kVerbose); }

 private:
  friend class LogStream;
  friend ARA_LOG_EXPORT Logger& CreateLogger(std::string_view contextId,
                                             std::string_view description, LogLevel level);

  Logger(std::string_view contextId, LogLevel level);

  LogStream Start(LogLevel level) const {
    const auto number = static_cast<std::uint8_t>(level);
    if (level > level_ || number > internal::threshold.load(std::memory_order_relaxed)) {
      return LogStream(nullptr);
    }
    return Open(level);
  }

  LogStream Open(LogLevel level) const;

  const std::string contextId_;
  const LogLevel level_;
};

/// Makes a logger. Every call makes a new one, also for a context that has one already.
/// @param contextId  names the source in every line; copied
/// @param description  says what the context is, for people; this implementation shows it nowhere
/// @param level  the least urgent level that the logger lets through
/// @return the logger, valid to the end of the process
/// @throws std::bad_alloc
/// Safe from any thread, also while libraries load.
ARA_LOG_EXPORT Logger& CreateLogger(std::string_view contextId, std::string_view description,
                                    LogLevel level);

}  // namespace ara::log

#endif  // ARA_LOG_LOGGING_H_
