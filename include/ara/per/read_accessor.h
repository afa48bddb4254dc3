#ifndef ARA_PER_READ_ACCESSOR_H_
#define ARA_PER_READ_ACCESSOR_H_

#include <cstdint>
#include <string>

#include "ara/per/basic_operations.h"
#include "ara/per/export.h"

namespace ara::per {

/// Reads a file of a file proxy. Made by `FileProxyAccessorFactory`.
///
/// An operation that meets the end of the file sets `eof()`. The position is then -1, but for
/// `peek` and `get`, so that reading on needs `clear()` and `seek`.
class ARA_PER_EXPORT ReadAccessor : virtual public BasicOperations {
 public:
  ~ReadAccessor() override;

  /// Intended: it goes by the position of the stream, not by that of the accessor, and moves
  /// neither.
  /// @return the next character as an unsigned number, or -1 at the end and in a failed state
  virtual int peek() = 0;

  /// As `peek`, and moves the position of the stream by one; the accessor's stays.
  virtual int get() = 0;

  /// Reads up to `n` bytes at the position and moves it behind them.
  ///
  /// Intended: the result is a difference of positions in 32 bits and not a count. A read that
  /// meets the end gives the number of bytes that remained, which is negative when it began beyond
  /// the end; in a failed state it is -1 minus the position.
  /// @param buf  room for `n` bytes
  /// @return the number of bytes, but see above; -1 for a null `buf` or an `n` of 0, which moves
  ///     nothing
  virtual long read(char* buf, unsigned long n) = 0;

  /// Reads into `s` up to `delim`, which is left out, as `std::getline` does. A last line without
  /// it is delivered, too; its end was met then.
  /// @return this accessor
  virtual ReadAccessor& getline(std::string& s, char delim) = 0;

  /// Reads one word into `s`, after white space. When the file ends with the word it is delivered,
  /// and the end was met.
  /// @return this accessor
  virtual ReadAccessor& operator>>(std::string& s) = 0;

  /// Intended: it brings the stream to the position of the accessor, and so changes what `peek` and
  /// `get` give.
  /// @return the size of the file in bytes, its low 32 bits. Intended: 0 in any state that is not
  ///     `good()`
  virtual std::uint32_t fileSize() = 0;
};

}  // namespace ara::per

#endif  // ARA_PER_READ_ACCESSOR_H_
