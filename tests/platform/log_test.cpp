#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <map>
#include <sstream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "ara/log/logging.h"
#include "ara/log/sink.h"
#include "tests/support/log_capture.h"

namespace ara::log {
namespace {

using ::testing::ExitedWithCode;

constexpr LogStream (Logger::*kStarts[])() const = {&Logger::LogFatal, &Logger::LogError,
                                                    &Logger::LogWarn,  &Logger::LogInfo,
                                                    &Logger::LogDebug, &Logger::LogVerbose};

class LogTest : public ::testing::Test {
 protected:
  /// The lines since the last call, each as "<level> <line>", with " / " between two.
  std::string Take() {
    const std::string joined = capture_.Joined();
    capture_.Clear();
    return joined;
  }

  ara::per::testing::LogCapture capture_;
  Logger& logger_ = CreateLogger("TEST", "of the tests", LogLevel::kVerbose);
};

TEST_F(LogTest, LineIsShownUpToTheLowerOfThresholdAndLoggerLevel) {
  for (int threshold = 0; threshold <= 6; ++threshold) {
    for (int own = 0; own <= 6; ++own) {
      SCOPED_TRACE(std::to_string(threshold) + " " + std::to_string(own));
      SetThreshold(static_cast<LogLevel>(threshold));
      Logger& logger = CreateLogger("CTX", "", static_cast<LogLevel>(own));
      for (const auto start : kStarts) (logger.*start)() << "x";
      const std::string all = "1 x / 2 x / 3 x / 4 x / 5 x / 6 x";
      const int shown = std::min(threshold, own);
      EXPECT_EQ(Take(), shown == 0 ? "" : all.substr(0, all.find(std::to_string(shown)) + 3));
    }
  }
}

TEST_F(LogTest, StreamSendsItsLineAtFlushAndItsRestOnceAtItsEnd) {
  {
    LogStream source = logger_.LogInfo();
    source << "one " << nullptr << "line";
    EXPECT_EQ(Take(), "");
    source.Flush().Flush();
    EXPECT_EQ(Take(), "4 one line");
    source << "rest";
    LogStream target = logger_.LogError();
    target << "overwritten";
    target = std::move(source);
    EXPECT_EQ(Take(), "2 overwritten");
    LogStream last(std::move(target));
    target << "lost";
    last << " moved";
  }
  EXPECT_EQ(Take(), "4 rest moved");
}

TEST_F(LogTest, StandardErrorTakesLinesFromInsideTheSinkAndThoseWithoutOne) {
  std::string taken;
  SetSink([&](LogLevel level, std::string_view context, std::string_view line) {
    taken.append(std::to_string(static_cast<int>(level))).append(context).append(line);
    logger_.LogFatal() << "inner";
  });
  ::testing::internal::CaptureStderr();
  logger_.LogError() << "one";
  logger_.LogWarn() << "two";
  SetSink({});
  for (const auto start : kStarts) (logger_.*start)() << "text";
  EXPECT_EQ(::testing::internal::GetCapturedStderr(),
            "[TEST][FATAL] inner\n[TEST][FATAL] inner\n"
            "[TEST][FATAL] text\n[TEST][ERROR] text\n[TEST][WARN] text\n"
            "[TEST][INFO] text\n[TEST][DEBUG] text\n[TEST][VERBOSE] text\n");
  EXPECT_EQ(taken, "2TESTone3TESTtwo");
}

TEST_F(LogTest, LinesOfSeveralThreadsStayWhole) {
  SetSink({});
  ::testing::internal::CaptureStderr();
  std::vector<std::thread> threads;
  for (const char letter : {'a', 'b', 'c', 'd'}) {
    threads.emplace_back([this, text = std::string(300, letter)] {
      for (int n = 0; n < 500; ++n) logger_.LogInfo() << text.c_str() << text.c_str();
    });
  }
  for (std::thread& thread : threads) thread.join();
  std::istringstream output(::testing::internal::GetCapturedStderr());
  std::map<std::string, int> counts;
  for (std::string line; std::getline(output, line);) ++counts[line];
  ASSERT_EQ(counts.size(), 4U);
  for (const auto& [line, count] : counts) {
    EXPECT_EQ(line, "[TEST][INFO] " + std::string(600, line.back()));
    EXPECT_EQ(count, 500);
  }
}

// The variable is read once, so every row runs in a process of its own.
TEST(LogDeathTest, EnvironmentGivesTheThresholdAtStart) {
  const std::pair<const char*, int> kCases[] = {
      {"", 2},     {"0", 0},     {"1", 1},       {"6", 6},     {"7", 2},     {"-1", 2},
      {"03", 2},   {"3 ", 2},    {"off", 0},     {"FATAL", 1}, {"Error", 2}, {"warn", 3},
      {"INFO", 4}, {"debug", 5}, {"Verbose", 6}, {"verb", 2},  {nullptr, 2},
  };
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  for (const auto& [text, threshold] : kCases) {
    SCOPED_TRACE(text == nullptr ? "not set" : text);
    ::setenv("ARA_LOG_LEVEL", text == nullptr ? "" : text, 1);
    if (text == nullptr) ::unsetenv("ARA_LOG_LEVEL");
    EXPECT_EXIT(std::_Exit(static_cast<int>(GetThreshold())), ExitedWithCode(threshold), "");
  }
}

TEST(LogDeathTest, LinesStillGoOutWhileTheProcessEnds) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const auto end = [] {
    std::atexit([] { CreateLogger("LATE", "", LogLevel::kFatal).LogFatal() << "unloading"; });
    SetSink([](auto, auto context, auto line) { std::cerr << context << " " << line << '\n'; });
    std::exit(0);
  };
  EXPECT_EXIT(end(), ExitedWithCode(0), "LATE unloading\n");
}

}  // namespace
}  // namespace ara::log
