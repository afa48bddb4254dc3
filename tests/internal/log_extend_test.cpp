#include "ara/per/log_extend.h"

#include <array>
#include <filesystem>
#include <limits>
#include <memory>
#include <numeric>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "ara/log/sink.h"
#include "ara/per/logic_error_exception.h"
#include "ara/per/per_version.h"
#include "ara/per/physical_storage_error_exception.h"
#include "tests/support/stdout_capture.h"

namespace ara::per::testing {
namespace {

using ara::log::LogLevel;

/// Sees every line whole, with its level and context in front.
class LogExtendTest : public ::testing::Test {
 protected:
  LogExtendTest() {
    ara::log::SetThreshold(LogLevel::kVerbose);
    ara::log::SetSink([this](LogLevel level, std::string_view context, std::string_view line) {
      lines_ +=
          std::to_string(static_cast<int>(level)) + std::string(context) + std::string(line) + "\n";
    });
  }

  ~LogExtendTest() override {
    ara::log::SetSink({});
    ara::log::SetThreshold(threshold_);
    // For the other tests: a local object's end has made the process forget the shared one.
    static std::vector<LogExtend*>& shared = *new std::vector<LogExtend*>;  // keeps them reachable
    shared.push_back(LogExtend::getLogExtenObject("PersistencyService"));
  }

  std::string TakeLines() { return std::exchange(lines_, {}); }

  const LogLevel threshold_ = ara::log::GetThreshold();
  std::string lines_;
  StdoutCapture stdout_;
  LogExtend* log_ = LogExtend::getLogExtenObject("PersistencyService");
};

TEST_F(LogExtendTest, LineIsFileLineAndMessageAtItsLevelAndOtherLevelsAreSilent) {
  for (const int level : {0, 1, 2, 3, 4, 5, 6, 7, 255}) {
    log_->setLogLevel(LogLevel::kFatal);  // changes nothing
    log_->logPrint(static_cast<LogLevel>(level), "50%d/%s b.cpp", 42, "speed %d", 5);
    EXPECT_EQ(log_->logInit(LogLevel::kOff), 0);  // nor does another logger
    log_->logPrint(static_cast<LogLevel>(level), LogPlace{"[50%d/%s b.cpp][42]"}, "speed %d", 5);
    const std::string line = std::to_string(level) + "PERSISTENCY[50%d/%s b.cpp][42]speed 5\n";
    EXPECT_EQ(TakeLines(), 1 <= level && level <= 6 ? line + line : "");
  }
}

TEST_F(LogExtendTest, FormatsReadAsPrintfWritesThem) {
  constexpr LogPlace kPlace{":"};
  const char* volatile null = nullptr;  // out of the compiler's sight
  log_->logPrint(LogLevel::kInfo, kPlace, "%s,%s,%s", null, "", "%d");
  log_->logPrint(LogLevel::kInfo, kPlace, "%d,%d,%u", -2147483647 - 1, 0, 4294967295U);
  log_->logPrint(LogLevel::kInfo, kPlace, "%s=%ld;%s", "a", -9223372036854775807L - 1, "b");
  log_->logPrint(LogLevel::kInfo, kPlace, "%d%% of %5d|%-4s|%04x %d", 5, 42, "ab", 255U, 6);
  log_->logPrint(LogLevel::kInfo, kPlace, "%.2f %lu", 2.345, 18446744073709551615UL);
  EXPECT_EQ(TakeLines(),
            "4PERSISTENCY:(null),,%d\n4PERSISTENCY:-2147483648,0,4294967295\n"
            "4PERSISTENCY:a=-9223372036854775808;b\n4PERSISTENCY:5% of    42|ab  |00ff 6\n"
            "4PERSISTENCY:2.35 18446744073709551615\n");
  for (std::size_t length = 0; length < 150; ++length) {
    std::string text(length, ' ');
    std::iota(text.begin(), text.end(), '\x30');
    log_->logPrint(LogLevel::kInfo, kPlace, "<%s>", text.c_str());
    EXPECT_EQ(TakeLines(), "4PERSISTENCY:<" + text + ">\n");
  }
  using Limits = std::numeric_limits<double>;
  for (const double value : {0.0, 0.5, 1.0000005, 1e22, 123456789.123456789, Limits::max(),
                             Limits::denorm_min(), Limits::infinity(), Limits::quiet_NaN()}) {
    std::array<char, 800> expected{};
    std::snprintf(expected.data(), expected.size(), "4PERSISTENCY:%f %f\n", value, -value);
    log_->logPrint(LogLevel::kInfo, kPlace, "%f %f", value, -value);
    EXPECT_EQ(TakeLines(), expected.data());
  }
}

TEST_F(LogExtendTest, LongLinesAreCutTo1023Bytes) {
  const auto text = [](std::size_t count) { return std::string(count, 'x'); };
  log_->logPrint(LogLevel::kInfo, "f", 1, "%s", text(1017).c_str());  // fits
  log_->logPrint(LogLevel::kInfo, "f", 1, "%s%d|tail", text(1014).c_str(), 7654);
  log_->logPrint(LogLevel::kInfo, "f", 1, "%s%ld|%s", text(1014).c_str(), 7654L, "y");
  log_->logPrint(LogLevel::kInfo, "f", 1, "%5s%f", text(5000).c_str(), 1.5);
  log_->logPrint(LogLevel::kInfo, text(3000), 1, "y");
  const std::string begin = "4PERSISTENCY[f][1]";
  EXPECT_EQ(TakeLines(), begin + text(1017) + "\n" + begin + text(1014) + "765\n" + begin +
                             text(1014) + "765\n" + begin + text(1017) + "\n4PERSISTENCY[" +
                             text(1022) + "\n");
}

TEST_F(LogExtendTest, EndOfLocalObjectMakesTheNextCallerCreateTheSharedOneAnew) {
  EXPECT_EQ(LogExtend::getLogExtenObject("another name"), log_);
  {
    LogExtend local("local", 2);
    local.logPrint(LogLevel::kDebug, "f", 1, "through the same logger");
    EXPECT_EQ(LogExtend::getLogExtenObject(""), log_);
  }
  EXPECT_EQ(stdout_.Take(), "");
  LogExtend* const next = LogExtend::getLogExtenObject("");
  EXPECT_NE(next, log_);
  EXPECT_EQ(LogExtend::getLogExtenObject("x"), next);
  EXPECT_EQ(stdout_.Take(), "option the log object\n");
  log_->logPrint(LogLevel::kDebug, "f", 2, "still usable");
  EXPECT_EQ(TakeLines(),
            "5PERSISTENCY[f][1]through the same logger\n5PERSISTENCY[f][2]still usable\n");
}

TEST(LogExtendLoadTest, SharedObjectIsAnnouncedOnceWhileTheProcessLoads) {
  const std::string self = std::filesystem::read_symlink("/proc/self/exe");
  const std::unique_ptr<FILE, int (*)(FILE*)> child(
      ::popen(("'" + self + "' --gtest_filter=None").c_str(), "r"), ::pclose);
  std::string output(10000, '\0');
  output.resize(std::fread(output.data(), 1, output.size(), child.get()));
  EXPECT_EQ(output.rfind("option the log object\n"), 0U) << output;
}

TEST(ExceptionTest, MessagesReadAsComposed) {
  EXPECT_EQ(GetCastErrorMessage("a/b.cpp", "GetBool", 12, "speed", "uint8", "Status::kSuccess"),
            "a/b.cpp : 12 : GetBool() :  key: speed :  type = uint8 : status = Status::kSuccess"
            " incorrect cast requested.");
  EXPECT_EQ(GetAllocationErrorMessage("a/b.cpp", "StartObject", 99),
            "a/b.cpp : 99 : StartObject() : memory allocation failed.");
  static_assert(!std::is_base_of_v<std::logic_error, LogicErrorException>);
  static_assert(!std::is_base_of_v<std::logic_error, PhysicalStorageErrorException>);
  const LogicErrorException logic("the whole text");
  const PhysicalStorageErrorException storage("another text");
  EXPECT_STREQ(static_cast<const std::exception&>(logic).what(), "the whole text");
  EXPECT_STREQ(static_cast<const std::exception&>(storage).what(), "another text");
}

TEST(VersionTest, EachCallPrintsOneLine) {
  StdoutCapture output;
  get_version();
  get_version();
  EXPECT_EQ(output.Take(), "00.06.02\n00.06.02\n");
}

}  // namespace
}  // namespace ara::per::testing
