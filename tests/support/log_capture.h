#ifndef TESTS_SUPPORT_LOG_CAPTURE_H_
#define TESTS_SUPPORT_LOG_CAPTURE_H_

#include <algorithm>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "ara/log/sink.h"

namespace ara::per::testing {

/// One captured line: the file that it names, its level and its text behind the "[file][line]".
struct LogLine {
  std::string file;
  int level;
  std::string text;
};

/// Captures every log line of the process, of all levels, while it lives.
class LogCapture {
 public:
  LogCapture() : threshold_(ara::log::GetThreshold()) {
    ara::log::SetThreshold(ara::log::LogLevel::kVerbose);
    ara::log::SetSink([this](ara::log::LogLevel level, std::string_view, std::string_view line) {
      const std::size_t end = line.find("][");
      const std::lock_guard<std::mutex> guard(mutex_);
      lines_.push_back({std::string(line.substr(1, end - 1)), static_cast<int>(level),
                        std::string(line.substr(line.find(']', end + 2) + 1))});
    });
  }

  ~LogCapture() {
    ara::log::SetSink({});
    ara::log::SetThreshold(threshold_);
  }

  /// The lines so far, each as "<level> <text>".
  /// @param file  the source file whose lines are asked for; empty for all
  std::vector<std::string> Texts(std::string_view file = "") const {
    const std::lock_guard<std::mutex> guard(mutex_);
    std::vector<std::string> texts;
    for (const LogLine& line : lines_) {
      if (file.empty() || line.file == file) {
        texts.push_back(std::to_string(line.level) + " " + line.text);
      }
    }
    return texts;
  }

  /// The same in one text, with a separator between two lines.
  std::string Joined(const char* separator = " / ", std::string_view file = "") const {
    std::string joined;
    for (const std::string& text : Texts(file)) {
      joined += (joined.empty() ? "" : separator) + text;
    }
    return joined;
  }

  bool Has(int level, const std::string& text) const {
    const std::vector<std::string> texts = Texts();
    return std::count(texts.begin(), texts.end(), std::to_string(level) + " " + text) != 0;
  }

  void Clear() {
    const std::lock_guard<std::mutex> guard(mutex_);
    lines_.clear();
  }

 private:
  mutable std::mutex mutex_;
  std::vector<LogLine> lines_;
  const ara::log::LogLevel threshold_;
};

}  // namespace ara::per::testing

#endif  // TESTS_SUPPORT_LOG_CAPTURE_H_
