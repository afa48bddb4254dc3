#ifndef TESTS_SUPPORT_DATABASE_TEST_H_
#define TESTS_SUPPORT_DATABASE_TEST_H_

#include <poll.h>

#include <chrono>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/log_capture.h"
#include "tests/support/stdout_capture.h"
#include "tests/support/temp_dir.h"

namespace ara::per::testing {

using Lines = std::vector<std::string>;

inline constexpr char kEngineFile[] = "key-value-storage/key_value_storage_impl.cpp";
inline constexpr char kTypesFile[] = "key-value-storage/key_value_storage_standard_types.cpp";

/// Waits for a condition, some seconds at most. @return whether it came true
template <class Condition>
bool WaitUntil(Condition&& condition) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  while (!condition()) {
    if (std::chrono::steady_clock::now() > deadline) {
      return false;
    }
    ::poll(nullptr, 0, 1);
  }
  return true;
}

/// A test of databases in a working directory of its own, with the log and standard output
/// captured. The configuration file that it starts with has neither redundancy nor delayed writes.
class DatabaseTest : public ::testing::Test {
 protected:
  DatabaseTest() { WriteConfig(false, 0, 0); }

  /// The log lines since the last call, each as "<level> <text>".
  /// @param file  the source file whose lines are asked for; empty for all
  Lines TakeLines(const std::string& file = "") {
    Lines lines;
    for (const LogLine& line : log_.Lines()) {
      if (file.empty() || line.file == file) {
        lines.push_back(std::to_string(line.level) + " " + line.text);
      }
    }
    log_.Clear();
    return lines;
  }

  TempDir dir_;
  LogCapture log_;
  StdoutCapture out_;
};

}  // namespace ara::per::testing

#endif  // TESTS_SUPPORT_DATABASE_TEST_H_
