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

/// One captured line: its level and its text without the "[file][line]" in front, and the file.
struct LogLine {
  int level;
  std::string text;
  std::string file;
};

inline bool operator==(const LogLine& a, const LogLine& b) {
  return a.level == b.level && a.text == b.text;
}

inline void PrintTo(const LogLine& line, std::ostream* out) {
  *out << line.level << " [" << line.file << "] " << line.text;
}

/// Captures every log line of the process, of all levels, while it lives. The lines are printed
/// when the test has failed.
class LogCapture {
 public:
  LogCapture() : threshold_(ara::log::GetThreshold()) {
    ara::log::SetThreshold(ara::log::LogLevel::kVerbose);
    ara::log::SetSink([this](ara::log::LogLevel level, std::string_view, std::string_view line) {
      const std::lock_guard<std::mutex> guard(mutex_);
      lines_.push_back(Split(static_cast<int>(level), line));
    });
  }

  ~LogCapture() {
    ara::log::SetSink({});
    ara::log::SetThreshold(threshold_);
    if (::testing::Test::HasFailure()) {
      for (const LogLine& line : lines_) {
        PrintTo(line, &std::cerr);
        std::cerr << '\n';
      }
    }
  }

  LogCapture(const LogCapture&) = delete;
  LogCapture& operator=(const LogCapture&) = delete;

  std::vector<LogLine> Lines() const {
    const std::lock_guard<std::mutex> guard(mutex_);
    return lines_;
  }

  /// The lines so far without their levels and files.
  std::vector<std::string> Texts() const {
    std::vector<std::string> texts;
    for (const LogLine& line : Lines()) {
      texts.push_back(line.text);
    }
    return texts;
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
    return std::find(lines.begin(), lines.end(), LogLine{level, std::string(text), ""}) !=
           lines.end();
  }

  void Clear() {
    const std::lock_guard<std::mutex> guard(mutex_);
    lines_.clear();
  }

 private:
  static LogLine Split(int level, std::string_view line) {
    const std::size_t fileEnd = line.find("][");
    const std::size_t prefixEnd = line.find(']', fileEnd + 2);
    if (line.empty() || line.front() != '[' || prefixEnd == std::string_view::npos) {
      return {level, std::string(line), ""};
    }
    return {level, std::string(line.substr(prefixEnd + 1)),
            std::string(line.substr(1, fileEnd - 1))};
  }

  mutable std::mutex mutex_;
  std::vector<LogLine> lines_;
  const ara::log::LogLevel threshold_;
};

}  // namespace ara::per::testing

#endif  // TESTS_SUPPORT_LOG_CAPTURE_H_
