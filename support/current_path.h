#ifndef SUPPORT_CURRENT_PATH_H_
#define SUPPORT_CURRENT_PATH_H_

#include <unistd.h>

#include <array>
#include <cstddef>
#include <string>

namespace ara::per {

/// The working directory of the process. One that does not fit `kSize` bytes with its end, or is
/// gone, counts as a directory in which nothing can be found.
template <std::size_t kSize>
std::string CurrentPath() {
  std::array<char, kSize> buffer{};
  return ::getcwd(buffer.data(), buffer.size()) == nullptr ? "/dev/null" : buffer.data();
}

}  // namespace ara::per

#endif  // SUPPORT_CURRENT_PATH_H_
