#ifndef TESTS_SUPPORT_STDOUT_CAPTURE_H_
#define TESTS_SUPPORT_STDOUT_CAPTURE_H_

#include <iostream>
#include <mutex>
#include <streambuf>
#include <string>
#include <utility>

namespace ara::per::testing {

/// Takes what any thread of the process writes through `std::cout` while it lives.
class StdoutCapture : private std::streambuf {
 public:
  StdoutCapture() : before_(std::cout.rdbuf(this)) {}
  ~StdoutCapture() override { std::cout.rdbuf(before_); }

  /// What was written since the last call.
  std::string Take() {
    const std::lock_guard<std::mutex> guard(mutex_);
    return std::exchange(text_, "");
  }

 private:
  int_type overflow(int_type character) override {
    const std::lock_guard<std::mutex> guard(mutex_);
    text_ += traits_type::to_char_type(character);
    return character;
  }

  std::mutex mutex_;
  std::string text_;
  std::streambuf* const before_;
};

}  // namespace ara::per::testing

#endif  // TESTS_SUPPORT_STDOUT_CAPTURE_H_
