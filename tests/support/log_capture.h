#ifndef TESTS_SUPPORT_LOG_CAPTURE_H_
#define TESTS_SUPPORT_LOG_CAPTURE_H_

#include <algorithm>
#include <iostream>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "ara/log/sink.h"

namespace ara::per::testing {

/// One captured line: its level and its text without the "[file][line]" in front, and the file,
/// which does not count in a comparison.
struct LogLine {
  int level;
  std::string text;
  std::string file;
};

inline bool operator==(const LogLine& a, const LogLine& b) {
  return a.level == b.level && a.text == b.text;
}

/// Captures every log line of the process, of all levels, while it lives. The lines are printed
/// when the test has failed.
class LogCapture {
 public:
  LogCapture() : threshold_(ara::log::GetThreshold()) {
    ara::log::SetThreshold(ara::log::LogLevel::kVerbose);
    ara::log::SetSink([this](ara::log::LogLevel level, std::string_view, std::string_view line) {
      const std::size_t end = line.find("][");
      const std::string file(line.substr(1, end - 1));
      const std::string text(line.substr(line.find(']', end + 2) + 1));
      const std::lock_guard<std::mutex> guard(mutex_);
      lines_.push_back({static_cast<int>(level), text, file});
    });
  }

  ~LogCapture() {
    ara::log::SetSink({});
    ara::log::SetThreshold(threshold_);
    if (::testing::Test::HasFailure()) {
      std::cerr << Joined() << '\n';
    }
  }

  std::vector<LogLine> Lines() const {
    const std::lock_guard<std::mutex> guard(mutex_);
    return lines_;
  }

  /// The lines so far, each as "<level> <text>", with " / " between two.
  std::string Joined() const {
    std::string joined;
    for (const LogLine& line : Lines()) {
      joined += (joined.empty() ? "" : " / ") + std::to_string(line.level) + " " + line.text;
    }
    return joined;
  }

  bool Has(int level, std::string_view text) const {
    const std::vector<LogLine> lines = Lines();
    return std::count(lines.begin(), lines.end(), LogLine{level, std::string(text), ""}) != 0;
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
