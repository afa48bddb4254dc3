#ifndef TESTS_SUPPORT_REDUNDANT_FILE_H_
#define TESTS_SUPPORT_REDUNDANT_FILE_H_

#include <filesystem>
#include <fstream>
#include <system_error>

namespace ara::per::testing {

/// Creates a file in the compiled-in directory of the redundant copies and removes in the end what
/// it has created.
class RedundantFile {
 public:
  explicit RedundantFile(const std::filesystem::path& path) {
    if (!std::filesystem::exists(path)) {
      created_ = path;
      while (!std::filesystem::exists(created_.parent_path())) {
        created_ = created_.parent_path();
      }
      std::filesystem::create_directories(path.parent_path(), ignored_);
      isOurs_ = std::ofstream(path).is_open();
    }
  }

  ~RedundantFile() { std::filesystem::remove_all(created_, ignored_); }

  RedundantFile(const RedundantFile&) = delete;

  /// @return whether it could be created and was not there before
  bool isOurs() const { return isOurs_; }

 private:
  std::filesystem::path created_;
  std::error_code ignored_;
  bool isOurs_ = false;
};

}  // namespace ara::per::testing

#endif  // TESTS_SUPPORT_REDUNDANT_FILE_H_
