#include <cstdlib>
#include <iostream>
#include <string>
#include <thread>
#include <utility>

#include <gtest/gtest.h>

#include "ara/log/logging.h"
#include "ara/log/sink.h"

namespace ara::log {

using ::testing::ExitedWithCode;

class LogTest : public ::testing::Test {
 protected:
  LogTest() {
    SetThreshold(LogLevel::kVerbose);
    ::testing::internal::CaptureStderr();
  }

  static void ExpectShown(const std::string& text) {
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), text);
  }

  Logger& logger_ = CreateLogger("TEST", "of the tests", LogLevel::kVerbose);
};

TEST_F(LogTest, LineIsShownUpToTheLowerOfThresholdAndLoggerLevel) {
  for (const auto& [threshold, own] : {std::pair(0, 6), {6, 0}, {1, 2}, {3, 2}, {6, 6}}) {
    std::cerr << threshold << own << '\n';
    SetThreshold(static_cast<LogLevel>(threshold));
    const Logger& logger = CreateLogger("TEST", "", static_cast<LogLevel>(own));
    for (const auto start : {&Logger::LogVerbose, &Logger::LogDebug, &Logger::LogInfo,
                             &Logger::LogWarn, &Logger::LogError, &Logger::LogFatal}) {
      (logger.*start)() << "x";
    }
  }
  ExpectShown(
      "06\n60\n12\n[TEST][FATAL] x\n32\n[TEST][ERROR] x\n[TEST][FATAL] x\n66\n[TEST][VERBOSE] x\n"
      "[TEST][DEBUG] x\n[TEST][INFO] x\n[TEST][WARN] x\n[TEST][ERROR] x\n[TEST][FATAL] x\n");
}

TEST_F(LogTest, StreamSendsItsLineAtFlushAndItsRestOnceAtItsEnd) {
  {
    LogStream stream = logger_.LogInfo();
    stream << "one " << nullptr << "line";
    std::cerr << "flush\n";
    stream.Flush().Flush() << "rest";
    const LogStream moved(std::move(stream));
    std::cerr << "end\n";
  }
  ExpectShown("flush\n[TEST][INFO] one line\nend\n[TEST][INFO] rest\n");
}

TEST_F(LogTest, SinkTakesAllLinesButThoseFromInsideIt) {
  SetSink([this](LogLevel level, std::string_view context, std::string_view line) {
    std::cerr << static_cast<int>(level) << context << line << '\n';
    logger_.LogFatal() << "inner";
  });
  logger_.LogError() << "one";
  logger_.LogWarn() << "two";
  SetSink({});
  logger_.LogInfo() << "three";
  ExpectShown("2TESTone\n[TEST][FATAL] inner\n3TESTtwo\n[TEST][FATAL] inner\n[TEST][INFO] three\n");
}

TEST_F(LogTest, LinesOfSeveralThreadsStayWhole) {
  const auto log = [this] {
    for (int n = 0; n < 1000; ++n) logger_.LogInfo() << "text";
  };
  std::thread other(log);
  log();
  other.join();
  std::string expected;
  while (expected.size() < 2000 * 18) expected += "[TEST][INFO] text\n";
  ExpectShown(expected);
}

// The variable is read once, so every row runs in a process of its own. Each logs while it ends.
TEST(LogDeathTest, EnvironmentGivesTheThresholdAtStartAndLinesStillGoOutAtTheEnd) {
  const std::pair<const char*, int> kCases[] = {
      {"", 2},    {"0", 0},    {"6", 6},     {"7", 2},    {"03", 2},
      {"Off", 0}, {"verb", 2}, {"fatal", 1}, {"WARN", 3}, {"verbose", 6}};
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const auto end = [] {
    std::atexit([] { CreateLogger("LATE", "", LogLevel::kFatal).LogFatal() << "unloading"; });
    SetSink([](auto, auto context, auto line) { std::cerr << context << " " << line << '\n'; });
    std::exit(static_cast<int>(GetThreshold()));
  };
  for (const auto& [text, threshold] : kCases) {
    SCOPED_TRACE(text);
    ::setenv("ARA_LOG_LEVEL", text, 1);
    EXPECT_EXIT(end(), ExitedWithCode(threshold), threshold == 0 ? "^$" : "LATE unloading\n");
  }
}

}  // namespace ara::log
