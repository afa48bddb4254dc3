#include "ara/per/log_extend.h"

#include <array>
#include <cmath>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "ara/log/sink.h"
#include "ara/per/per_version.h"
#include "ara/per/physical_storage_error_exception.h"
#include "tests/support/log_capture.h"
#include "tests/support/stdout_capture.h"

namespace ara::per::testing {

using ara::log::LogLevel;

/// Sees every line whole, with its level and context in front.
class LogExtendTest : public ::testing::Test {
 protected:
  LogExtendTest() {
    ara::log::SetSink([this](LogLevel level, std::string_view context, std::string_view line) {
      lines_ += std::to_string(static_cast<int>(level));
      lines_.append(context).append(line) += '\n';
    });
  }
  void ExpectLines(const std::string& lines) { EXPECT_EQ(std::exchange(lines_, ""), lines); }

  LogCapture all_;  // sets the threshold for the sink above and resets both
  std::string lines_;
  StdoutCapture stdout_;
  LogExtend* log_ = LogExtend::getLogExtenObject("PersistencyService");
};

TEST_F(LogExtendTest, LineIsFileLineAndMessageAtItsLevelAndOtherLevelsAreSilent) {
  log_->setLogLevel(LogLevel::kFatal);          // changes nothing
  EXPECT_EQ(log_->logInit(LogLevel::kOff), 0);  // nor does another logger
  for (const int level : {0, 1, 2, 3, 4, 5, 6, 7, 255}) {
    log_->logPrint(static_cast<LogLevel>(level), "50%d/%s b.cpp", 42, "speed %d", 5);
    log_->logPrint(static_cast<LogLevel>(level), LogPlace{"[50%d/%s b.cpp][42]"}, "speed %d", 5);
    const std::string line = std::to_string(level) + "PERSISTENCY[50%d/%s b.cpp][42]speed 5\n";
    ExpectLines(1 <= level && level <= 6 ? line + line : "");
  }
}

TEST_F(LogExtendTest, FormatsReadAsPrintfWritesThem) {
  constexpr LogPlace kPlace{":"};
  const char* volatile null = nullptr;  // out of the compiler's sight
  log_->logPrint(LogLevel::kInfo, kPlace, "%s,%s,%d,%u,%ld", null, "%d", -5, ~0U, -5000000000);
  ExpectLines("4PERSISTENCY:(null),%d,-5,4294967295,-5000000000\n");
  log_->logPrint(LogLevel::kInfo, kPlace, "%d%% %5d|%-4s|%04x %d", 5, 42, "ab", 255U, 6);
  ExpectLines("4PERSISTENCY:5%    42|ab  |00ff 6\n");
  log_->logPrint(LogLevel::kInfo, kPlace, "%.*s|%.*s|%.*s%d|%.1s|%d", 2, "abc", 9, "de", -1, "f", 7,
                 "gh", 8);
  ExpectLines("4PERSISTENCY:ab|de|f7|g|8\n");
  for (const double value : {0.5, 1.0000005, 1e22, 1.7e308, 5e-324, HUGE_VAL, std::nan("")}) {
    std::array<char, 800> expected{};
    std::snprintf(expected.data(), expected.size(), "4PERSISTENCY:%f %f\n", value, -value);
    log_->logPrint(LogLevel::kInfo, kPlace, "%f %f", value, -value);
    ExpectLines(expected.data());
  }
}

TEST_F(LogExtendTest, LongLinesAreCutTo1023Bytes) {
  const std::string text(1014, 'x');
  const std::string begin = "4PERSISTENCY[f][1]" + text;
  log_->logPrint(LogLevel::kInfo, "f", 1, "%s%ld|%s", text.c_str(), 7654L, "y");
  log_->logPrint(LogLevel::kInfo, "f", 1, "%5s%f", (text + text).c_str(), 1.5);
  log_->logPrint(LogLevel::kInfo, text + text, 1, "y");
  ExpectLines(begin + "765\n" + begin + "xxx\n4PERSISTENCY[" + text + "xxxxxxxx\n");
}

TEST_F(LogExtendTest, EndOfLocalObjectMakesTheNextCallerCreateTheSharedOneAnew) {
  static LogExtend* const first = log_;  // stays reachable
  {
    const LogExtend local("local", 2);
    EXPECT_EQ(LogExtend::getLogExtenObject(""), first);
  }
  EXPECT_NE(LogExtend::getLogExtenObject(""), first);
  EXPECT_EQ(stdout_.Take(), "option the log object\n");
  first->logPrint(LogLevel::kDebug, "f", 2, "usable");
  ExpectLines("5PERSISTENCY[f][2]usable\n");
  get_version();
  EXPECT_EQ(stdout_.Take(), "00.06.02\n");
  EXPECT_EQ(GetAllocationErrorMessage("a/b.cpp", "StartObject", 99),
            "a/b.cpp : 99 : StartObject() : memory allocation failed.");
}

}  // namespace ara::per::testing
