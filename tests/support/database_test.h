#ifndef TESTS_SUPPORT_DATABASE_TEST_H_
#define TESTS_SUPPORT_DATABASE_TEST_H_

#include <poll.h>

#include <regex>
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

/// Waits for a condition, some 20 seconds at most. @return whether it came true
template <class Condition>
bool WaitUntil(Condition&& condition) {
  for (int tries = 20000; tries > 0 && !condition(); --tries) {
    ::poll(nullptr, 0, 1);
  }
  return condition();
}

/// A test of databases in a working directory of its own, with the log and standard output
/// captured. The configuration file that it starts with has neither redundancy nor delayed writes.
class DatabaseTest : public ::testing::Test {
 protected:
  DatabaseTest() { WriteConfig(false, 0, 0); }

  /// The log lines since the last call, each as "<level> <text>", in one text with a bar between
  /// two lines and `by` for each `part`.
  std::string TakeText(const std::string& file, const char* part, const char* by) {
    const std::string text = log_.Joined("|", file);
    log_.Clear();
    return std::regex_replace(text, std::regex(part), by);
  }

  TempDir dir_;
  LogCapture log_;
  StdoutCapture out_;
};

}  // namespace ara::per::testing

#endif  // TESTS_SUPPORT_DATABASE_TEST_H_
