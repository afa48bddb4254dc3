#ifndef ARA_PER_WRITE_ACCESSOR_H_
#define ARA_PER_WRITE_ACCESSOR_H_

#include <string>

#include "ara/per/basic_operations.h"
#include "ara/per/export.h"

namespace ara::per {

/// Writes a file of a file proxy. Made by `FileProxyAccessorFactory`.
///
/// What was written reaches the file with `flush` or the end of the accessor. What `write` has
/// written reaches the disk with `fsync`, or `updateTime` milliseconds after the first `write` of a
/// burst. Intended: any accessor or database of the process can silence that delay.
class ARA_PER_EXPORT WriteAccessor : virtual public BasicOperations {
 public:
  ~WriteAccessor() override;

  /// Makes the data of `write` durable and waits for the disk; without any since the last time it
  /// does nothing.
  ///
  /// Intended: no failure is reported, and each synchronisation leaves a file descriptor of the
  /// process open. With redundancy configured, a file that is not smaller than `maxSize` bytes is
  /// flushed but not synchronised, and the delayed synchronisation does not come again; otherwise
  /// the checksum is taken from the position on, which as a rule leaves the accessor in a failed
  /// state with the position -1.
  /// @throws std::bad_alloc with redundancy configured, when the file, which is held as a whole,
  ///     does not fit; on the thread of a delay that ends the process
  virtual void fsync() = 0;

  /// Writes `n` bytes at the position, moves it behind them, and arms the delayed synchronisation
  /// when none is pending. Of all accessors of the process one writes at a time.
  ///
  /// Intended: the result is a difference of positions and not a count. With `app` that is not the
  /// number of bytes; in a state that is not `good()` and not `bad()` nothing is written, also with
  /// `eof()` alone, and the change counts all the same.
  /// @param buf  `n` bytes
  /// @return the number of bytes, but see above; -1 for a null `buf` or an `n` of 0; 0 when the
  ///     stream is `bad()`
  /// @throws std::system_error when the lock fails, or when the thread of the delayed
  ///     synchronisation cannot be started; the data has been written by then
  virtual long write(const char* buf, unsigned long n) = 0;

  /// Writes a text at the position and moves it behind the text.
  /// Intended: it is no change for `fsync`, and arms nothing; use `write` for what must last.
  /// @return this accessor
  virtual WriteAccessor& operator<<(const std::string& s) = 0;

  /// Calls `manip` with this accessor. @return this accessor
  virtual WriteAccessor& operator<<(WriteAccessor& (*manip)(WriteAccessor&)) = 0;

  /// Hands what was written to the file, not to the disk.
  virtual void flush() = 0;
};

}  // namespace ara::per

#endif  // ARA_PER_WRITE_ACCESSOR_H_
