#include <cstdlib>
#include <iostream>
#include <mutex>
#include <sstream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "ara/log/logging.h"
#include "ara/log/sink.h"

namespace ara {
namespace log {
namespace {

constexpr LogStream (Logger::*kStarts[])() const = {&Logger::LogFatal, &Logger::LogError,
                                                    &Logger::LogWarn,  &Logger::LogInfo,
                                                    &Logger::LogDebug, &Logger::LogVerbose};

/// Shows everything, in a list of "<level> <context> <line>".
class LogTest : public ::testing::Test {
 protected:
  using Lines = std::vector<std::string>;

  LogTest() {
    SetThreshold(LogLevel::kVerbose);
    SetSink([this](LogLevel level, std::string_view context, std::string_view line) {
      const std::lock_guard<std::mutex> lock(mutex_);
      lines_.push_back(std::to_string(static_cast<int>(level)) + " " + std::string(context) + " " +
                       std::string(line));
    });
  }

  ~LogTest() override {
    SetSink({});
    SetThreshold(before_);
  }

  Lines TakeLines() { return std::exchange(lines_, {}); }

  const LogLevel before_ = GetThreshold();
  Logger& logger_ = CreateLogger("TEST", "of the tests", LogLevel::kVerbose);
  std::mutex mutex_;
  Lines lines_;
};

TEST_F(LogTest, LineIsShownUpToTheLowerOfThresholdAndLoggerLevel) {
  for (int threshold = 0; threshold <= 6; ++threshold) {
    for (int own = 0; own <= 6; ++own) {
      SCOPED_TRACE(std::to_string(threshold) + " " + std::to_string(own));
      SetThreshold(static_cast<LogLevel>(threshold));
      Logger& logger = CreateLogger("CTX", "", static_cast<LogLevel>(own));
      Lines expected;
      for (int level = 1; level <= 6; ++level) {
        (logger.*kStarts[level - 1])() << "text";
        if (level <= threshold && level <= own) {
          expected.push_back(std::to_string(level) + " CTX text");
        }
      }
      EXPECT_EQ(TakeLines(), expected);
    }
  }
}

TEST_F(LogTest, LineGoesOutAtFlushAndTheRestAtTheEndOfTheStream) {
  {
    LogStream stream = logger_.LogWarn();
    stream << "one " << nullptr << "line";
    EXPECT_EQ(TakeLines(), Lines{});
    stream.Flush().Flush();
    EXPECT_EQ(TakeLines(), Lines{"3 TEST one line"});
    stream << "rest";
  }
  EXPECT_EQ(TakeLines(), Lines{"3 TEST rest"});
  logger_.LogWarn();
  EXPECT_EQ(TakeLines(), Lines{});
}

TEST_F(LogTest, MovedStreamCarriesItsLineOnce) {
  {
    LogStream source = logger_.LogInfo();
    source << "first";
    LogStream target = logger_.LogError();
    target << "second";
    target = std::move(source);
    EXPECT_EQ(TakeLines(), Lines{"2 TEST second"});
    LogStream last(std::move(target));
    target << "lost";
    last << " line";
  }
  EXPECT_EQ(TakeLines(), Lines{"4 TEST first line"});
}

TEST_F(LogTest, LineLoggedInsideTheSinkGoesToStandardError) {
  SetSink([this](LogLevel, std::string_view, std::string_view line) {
    lines_.emplace_back(line);
    logger_.LogFatal() << "inner";
    SetThreshold(LogLevel::kVerbose);
  });
  ::testing::internal::CaptureStderr();
  logger_.LogError() << "one";
  logger_.LogError() << "two";
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "[TEST][FATAL] inner\n[TEST][FATAL] inner\n");
  EXPECT_EQ(TakeLines(), (Lines{"one", "two"}));
}

TEST_F(LogTest, EmptySinkRestoresStandardError) {
  SetSink({});
  ::testing::internal::CaptureStderr();
  ::testing::internal::CaptureStdout();
  for (const auto start : kStarts) (logger_.*start)() << "text";
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(::testing::internal::GetCapturedStderr(),
            "[TEST][FATAL] text\n[TEST][ERROR] text\n[TEST][WARN] text\n"
            "[TEST][INFO] text\n[TEST][DEBUG] text\n[TEST][VERBOSE] text\n");
  EXPECT_EQ(TakeLines(), Lines{});
}

TEST_F(LogTest, LinesOfSeveralThreadsStayWhole) {
  SetSink({});
  constexpr std::size_t kThreads = 4;
  constexpr std::size_t kLinesEach = 500;
  ::testing::internal::CaptureStderr();
  std::vector<std::thread> threads;
  for (std::size_t i = 0; i < kThreads; ++i) {
    threads.emplace_back([i] {
      const std::string context(1, static_cast<char>('a' + i));
      const std::string text(300, context.front());
      Logger& logger = CreateLogger(context, "", LogLevel::kVerbose);
      for (std::size_t n = 0; n < kLinesEach; ++n) logger.LogInfo() << text.c_str() << text.c_str();
    });
  }
  for (std::thread& thread : threads) thread.join();

  std::istringstream output(::testing::internal::GetCapturedStderr());
  std::size_t whole = 0;
  for (std::string line; std::getline(output, line); ++whole) {
    const std::string letters(600, line.size() > 1 ? line[1] : '?');
    ASSERT_EQ(line, "[" + letters.substr(0, 1) + "][INFO] " + letters);
  }
  EXPECT_EQ(whole, kThreads * kLinesEach);
}

// The variable is read once, so every row runs in a process of its own.
TEST(LogDeathTest, EnvironmentGivesTheThresholdAtStart) {
  const struct {
    const char* text;  // null: not set
    int threshold;
  } kCases[] = {
      {nullptr, 2}, {"", 2},     {"0", 0},     {"1", 1},       {"6", 6},     {"7", 2},
      {"-1", 2},    {"03", 2},   {"3 ", 2},    {"off", 0},     {"FATAL", 1}, {"Error", 2},
      {"warn", 3},  {"INFO", 4}, {"debug", 5}, {"Verbose", 6}, {"verb", 2},  {"loud", 2},
  };
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.text == nullptr ? "not set" : c.text);
    if (c.text == nullptr) {
      ::unsetenv("ARA_LOG_LEVEL");
    } else {
      ::setenv("ARA_LOG_LEVEL", c.text, 1);
    }
    EXPECT_EXIT(std::_Exit(static_cast<int>(GetThreshold())),
                ::testing::ExitedWithCode(c.threshold), "");
  }
  ::unsetenv("ARA_LOG_LEVEL");
}

struct LogsAtItsEnd {
  ~LogsAtItsEnd() { CreateLogger("LATE", "", LogLevel::kFatal).LogFatal() << "unloading"; }
};

TEST(LogDeathTest, LinesStillGoOutWhileTheProcessEnds) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const auto run = [] {
    static const LogsAtItsEnd object;
    SetSink([](LogLevel, std::string_view context, std::string_view line) {
      std::cerr << context << " " << line << std::endl;
    });
    std::exit(0);
  };
  EXPECT_EXIT(run(), ::testing::ExitedWithCode(0), "LATE unloading\n");
}

}  // namespace
}  // namespace log
}  // namespace ara
