#include "ara/log/logging.h"

#include <memory>
#include <mutex>
#include <vector>

#include "ara/log/sink.h"
#include "sink_state.h"

namespace ara {
namespace log {

struct LogStream::Line {
  const Logger& logger;
  LogLevel level;
  std::string text;
};

void LogStream::Append(const char* text) {
  if (text != nullptr) line_->text += text;
}

void LogStream::Send() {
  if (line_->text.empty()) return;
  SendToSink(line_->level, line_->logger.contextId_, line_->text);
  line_->text.clear();
}

void LogStream::Finish() noexcept {
  const std::unique_ptr<Line> owner(line_);
  Send();
}

Logger::Logger(std::string_view contextId, LogLevel level) : contextId_(contextId), level_(level) {}

LogStream Logger::Open(LogLevel level) const {
  if (level > GetThreshold()) return LogStream(nullptr);
  return LogStream(new LogStream::Line{*this, level, {}});
}

Logger& CreateLogger(std::string_view contextId, std::string_view /*description*/, LogLevel level) {
  // Made on first use and never destroyed: other libraries log before our own initialisers have run
  // and after our destructors would have.
  static std::mutex& mutex = *new std::mutex;
  static auto& loggers = *new std::vector<std::unique_ptr<Logger>>;
  std::unique_ptr<Logger> logger(new Logger(contextId, level));
  const std::lock_guard<std::mutex> lock(mutex);
  return *loggers.emplace_back(std::move(logger));
}

}  // namespace log
}  // namespace ara
