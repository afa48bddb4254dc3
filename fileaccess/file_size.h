#ifndef FILEACCESS_FILE_SIZE_H_
#define FILEACCESS_FILE_SIZE_H_

#include <cstdint>
#include <ios>
#include <limits>

namespace ara::per {

/// The size of a file in 32 bits by the position of its end; 0 when that is none: -1 for a stream
/// that has failed, the largest offset for a directory.
inline std::uint32_t SizeByEnd(std::streamoff end) {
  const bool isKnown = end >= 0 && end != std::numeric_limits<std::streamoff>::max();
  return isKnown ? static_cast<std::uint32_t>(end) : 0;
}

}  // namespace ara::per

#endif  // FILEACCESS_FILE_SIZE_H_
