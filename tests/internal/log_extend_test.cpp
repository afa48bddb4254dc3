#include "ara/per/log_extend.h"

#include <string>

#include <gtest/gtest.h>

#include "ara/log/sink.h"
#include "ara/per/per_version.h"
#include "ara/per/physical_storage_error_exception.h"
#include "tests/support/log_capture.h"
#include "tests/support/stdout_capture.h"

namespace ara::per::testing {

using ara::log::LogLevel;

constexpr LogLevel kInfo = LogLevel::kInfo;
constexpr LogPlace kPlace{"[%s][1]"};

class LogExtendTest : public ::testing::Test {
 protected:
  LogCapture lines_;
  StdoutCapture stdout_;
  LogExtend* log_ = LogExtend::getLogExtenObject("PersistencyService");
};

TEST_F(LogExtendTest, LineIsFileLineAndMessageAtItsLevelAndOtherLevelsAreSilent) {
  std::string lines;
  ara::log::SetSink([&](LogLevel level, std::string_view context, std::string_view line) {
    lines.append(std::to_string(static_cast<int>(level))).append(context).append(line);
  });
  log_->setLogLevel(LogLevel::kFatal);          // changes nothing
  EXPECT_EQ(log_->logInit(LogLevel::kOff), 0);  // nor does another logger
  for (const int level : {0, 1, 2, 3, 4, 5, 6, 7, 255}) {
    lines.clear();
    log_->logPrint(static_cast<LogLevel>(level), "50%d/%s b.cpp", 42, "speed %d", 5);
    const std::string line = std::to_string(level) + "PERSISTENCY[50%d/%s b.cpp][42]speed 5";
    EXPECT_EQ(lines, 1 <= level && level <= 6 ? line : "");
  }
}

TEST_F(LogExtendTest, FormatsReadAsPrintfWritesThemInLinesOf1023BytesAtMost) {
  const char* volatile null = nullptr;  // out of the compiler's sight
  const std::string text(1014, 'x');
  log_->logPrint(kInfo, kPlace, "%s,%s,%d,%u,%ld,%f", null, "%d", -5, ~0U, -5000000000, 0.5);
  log_->logPrint(kInfo, kPlace, "%d%% %5d|%-4s|%04x %d", 5, 42, "ab", 255U, 6);
  log_->logPrint(kInfo, kPlace, "%.*s|%.*s%d|%.1s|%d", 2, "abc", -1, "de", 7, "gh", 8);
  log_->logPrint(kInfo, "f", 1, "%s%ld|%s", text.c_str(), 7654L, "y");
  log_->logPrint(kInfo, "f", 1, "%5s%f", (text + text).c_str(), 1.5);
  log_->logPrint(kInfo, text + text, 1, "y");
  EXPECT_EQ(lines_.Joined(),
            "4 (null),%d,-5,4294967295,-5000000000,0.500000 / 4 5%    42|ab  |00ff 6 / "
            "4 ab|de7|g|8 / 4 " +
                text + "765 / 4 " + text + "xxx / 4 [" + text + "xxxxxxxx");
}

TEST_F(LogExtendTest, EndOfLocalObjectMakesTheNextCallerCreateTheSharedOneAnew) {
  static LogExtend* first;  // stays reachable
  first = log_;
  {
    const LogExtend local("local", 2);
    EXPECT_EQ(LogExtend::getLogExtenObject(""), first);
  }
  EXPECT_NE(LogExtend::getLogExtenObject(""), first);
  EXPECT_EQ(stdout_.Take(), "option the log object\n");
  first->logPrint(LogLevel::kDebug, kPlace, "usable");
  EXPECT_EQ(lines_.Joined(), "5 usable");
}

TEST_F(LogExtendTest, VersionAndMessageOfAnAllocationRead) {
  get_version();
  EXPECT_EQ(stdout_.Take(), "00.06.02\n");
  EXPECT_EQ(GetAllocationErrorMessage("a/b.cpp", "StartObject", 99),
            "a/b.cpp : 99 : StartObject() : memory allocation failed.");
}

}  // namespace ara::per::testing
