#ifndef TESTS_SUPPORT_TEMP_DIR_H_
#define TESTS_SUPPORT_TEMP_DIR_H_

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include <gtest/gtest.h>

namespace ara::per::testing {

inline std::string ReadFile(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

inline void WriteFile(const std::filesystem::path& path, const std::string& text) {
  std::ofstream(path, std::ios::binary) << text;
}

/// A fresh directory with a short name, for tests of paths of 80 bytes, that is the working
/// directory while the object lives and is removed with all its content.
class TempDir {
 public:
  TempDir() { std::filesystem::current_path(path_); }

  ~TempDir() {
    std::error_code ignored;
    std::filesystem::current_path(before_, ignored);
    // A save of a new file leaves a command behind that may create it once more meanwhile.
    for (int i = 0; i < 100 && std::filesystem::remove_all(path_, ignored) != 0; ++i) {
    }
  }

  TempDir(const TempDir&) = delete;

  const std::filesystem::path& Path() const { return path_; }

 private:
  const std::filesystem::path before_ = std::filesystem::current_path();
  const std::filesystem::path path_ = ::mkdtemp(std::string("/tmp/perXXXXXX").data());
};

/// Writes the configuration file into the working directory.
inline void WriteConfig(bool isRedundancy, unsigned int maxSize, unsigned int updateTime) {
  WriteFile("PersistencyConfig.json",
            std::string("{\"DataConfig\":{\"isRedundancy\":") + (isRedundancy ? "true" : "false") +
                ",\"maxSize\":" + std::to_string(maxSize) +
                ",\"checksum\":0,\"updateTime\":" + std::to_string(updateTime) + "}}");
}

}  // namespace ara::per::testing

#endif  // TESTS_SUPPORT_TEMP_DIR_H_
