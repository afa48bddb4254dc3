// Stands in for libFuzzer's main: runs the fuzz target over files and folders of files.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

namespace fs = std::filesystem;

void Replay(const fs::path& file) {
  std::ifstream stream(file, std::ios::binary);
  stream.exceptions(std::ios::badbit);
  if (!stream) {
    throw std::runtime_error("cannot read " + file.string());
  }
  const std::string bytes{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
  std::printf("%s\n", file.c_str());
  static_cast<void>(std::fflush(stdout));  // names the input that crashes
  LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
}

int ReplayAll(const fs::path& path) {
  if (!fs::is_directory(path)) {
    Replay(path);
    return 1;
  }
  int count = 0;
  for (const fs::directory_entry& entry : fs::recursive_directory_iterator(path)) {
    if (entry.is_regular_file()) {
      Replay(entry.path());
      ++count;
    }
  }
  return count;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    int count = 0;
    for (int i = 1; i < argc; ++i) {
      count += ReplayAll(argv[i]);
    }
    std::printf("%d inputs replayed\n", count);
    return count > 0 ? 0 : 1;
  } catch (const std::exception& error) {
    static_cast<void>(std::fprintf(stderr, "%s\n", error.what()));
    return 1;
  }
}
