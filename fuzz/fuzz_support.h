#ifndef FUZZ_FUZZ_SUPPORT_H_
#define FUZZ_FUZZ_SUPPORT_H_

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>

/// What the fuzz targets share. They work in the current directory.
namespace fuzz {

/// Ends the process when a property does not hold, so that the input counts as a find.
inline void Demand(bool holds, const char* property) {
  if (!holds) {
    static_cast<void>(std::fprintf(stderr, "does not hold: %s\n", property));
    std::abort();
  }
}

inline std::string TextOf(const std::uint8_t* data, std::size_t size) {
  return {data, data + size};
}

inline void WriteFile(const std::string& path, const std::string& bytes) {
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  file << bytes;
  Demand(file.flush().good(), "the directory can be written");
}

inline std::string ReadFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

}  // namespace fuzz

#endif  // FUZZ_FUZZ_SUPPORT_H_
