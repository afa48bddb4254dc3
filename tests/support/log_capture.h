#ifndef TESTS_SUPPORT_LOG_CAPTURE_H_
#define TESTS_SUPPORT_LOG_CAPTURE_H_

#include <algorithm>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "ara/log/sink.h"

namespace ara::per::testing {

/// Captures every log line of the process, of all levels, while it lives.
class LogCapture {
 public:
  LogCapture() : threshold_(ara::log::GetThreshold()) {
    ara::log::SetThreshold(ara::log::LogLevel::kVerbose);
    ara::log::SetSink([this](ara::log::LogLevel level, std::string_view, std::string_view line) {
      const std::size_t end = line.find("][");
      const std::lock_guard<std::mutex> guard(mutex_);
      lines_.emplace_back(line.substr(1, end - 1),
                          std::to_string(static_cast<int>(level)) + " " +
                              std::string(line.substr(line.find(']', end + 2) + 1)));
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
    for (const auto& [place, text] : lines_) {
      if (file.empty() || place == file) texts.push_back(text);
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
  std::vector<std::pair<std::string, std::string>> lines_;  // source file; "<level> <text>"
  const ara::log::LogLevel threshold_;
};

}  // namespace ara::per::testing

#endif  // TESTS_SUPPORT_LOG_CAPTURE_H_
