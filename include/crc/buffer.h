#ifndef CRC_BUFFER_H_
#define CRC_BUFFER_H_

#include <ostream>
#include <vector>

#include "ara/per/export.h"

namespace ara::per {
class LogExtend;
}  // namespace ara::per

namespace crc {

/// A checked view of a run of bytes, which it does not own: the argument of the checksums of
/// `crc::CRC`. A view that exists may be read, as long as the bytes live.
///
/// Each failed check is also logged as a warning. Intended: a view of a vector logs one more, also
/// when nothing fails, but for bounds that are crossed. A view is for one thread; any number of
/// views may show the same bytes.
class ARA_PER_EXPORT BufferView {
 public:
  /// Views `count` bytes from `bytes`; a null pointer with a count of 0 is an empty view.
  /// @throws std::invalid_argument when `bytes` is null and `count` is not 0
  BufferView(const unsigned char* bytes, unsigned long count);

  /// Views the first `count` bytes of `buf`.
  /// Intended: a count of 0 is refused here, although the other forms make empty views.
  /// @throws std::length_error when `count` is 0 or above the size of `buf`
  BufferView(const std::vector<unsigned char>& buf, unsigned long count);

  /// Views the bytes of `buf` from `begin` up to but not including `end`; equal bounds make an
  /// empty view.
  /// @throws std::invalid_argument when `begin` is above `end`
  /// @throws std::out_of_range when `end` is above the size of `buf`
  BufferView(const std::vector<unsigned char>& buf, unsigned long begin, unsigned long end);

  BufferView(const BufferView&) = delete;
  BufferView& operator=(const BufferView&) = delete;

  /// Leave the source an empty view.
  BufferView(BufferView&& other) noexcept;
  BufferView& operator=(BufferView&& other) noexcept;

  /// @return whether there are no bytes to read, or the pointer to them is not null
  bool isValid() const;

 private:
  friend class CRC;

  const unsigned char* data;
  unsigned long length;
  // Intended: null in a view that was moved into existence, but taken along by an assignment;
  // nothing reads it there.
  ara::per::LogExtend* log;
};

}  // namespace crc

/// Writes the bytes in order: an upper-case letter as itself, any other byte as two lower-case
/// hexadecimal digits in brackets, "[0a]".
///
/// Intended: a stream that has shown such a byte is left with decimal numbers and the fill
/// character '0'.
ARA_PER_EXPORT std::ostream& operator<<(std::ostream& stream,
                                        const std::vector<unsigned char>& bytes);

#endif  // CRC_BUFFER_H_
