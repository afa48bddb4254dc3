#include "ara/log/logging.h"

#include <memory>
#include <mutex>
#include <vector>

#include "ara/log/sink.h"
#include "sink_state.h"

namespace ara::log {

struct LogStream::Line {
  const Logger& logger;
  LogLevel level;
  std::string text;

  void Send();
};

void LogStream::Append(const char* text) {
  if (text != nullptr) {
    line_->text += text;
  }
}

void LogStream::Line::Send() {
  if (text.empty()) {
    return;
  }
  SendToSink(level, logger.contextId_, text);
  text.clear();
}

void LogStream::Send() { line_->Send(); }

void LogStream::SendAndDelete::operator()(Line* line) const noexcept {
  const std::unique_ptr<Line> owner(line);
  line->Send();
}

Logger::Logger(std::string_view contextId, LogLevel level) : contextId_(contextId), level_(level) {}

LogStream Logger::Open(LogLevel level) const {
  if (level > GetThreshold()) {
    return LogStream(nullptr);
  }
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

}  // namespace ara::log
