#ifndef ARA_PER_BASIC_OPERATIONS_H_
#define ARA_PER_BASIC_OPERATIONS_H_

#include <cstdint>
#include <ios>

#include "ara/per/export.h"

namespace ara::per {

/// What every accessor to a file of a file proxy can do: move its position and tell its state.
///
/// An accessor reads and writes at one position of its own, which it sets before each operation;
/// `peek` and `get` alone go by the position of the stream behind it. Its state are the flags of
/// that stream, in the meaning of `std::ios` (ISO C++ [ios]). While `fail()`, nothing is read or
/// written. With `eof()` alone, as after a `peek` at the end, reading at another position clears
/// the flag and works. Intended: writing does neither, and what is written then is lost.
///
/// Threads: an accessor takes no lock but in `write`. One thread may use it at a time. Intended:
/// the delayed synchronisation runs on a thread of its own beside it without a guard; an
/// application that goes on using the accessor meanwhile may leave it broken. Switch the delay off,
/// or call `fsync` before the delay ends.
class ARA_PER_EXPORT BasicOperations {
 public:
  /// How a file is opened, as `std::ios_base::openmode`; combine with `|`. A combination that
  /// `std::basic_filebuf::open` does not know, such as `trunc` with `app`, opens nothing.
  enum class OpenMode : std::uint8_t {
    app = 0x01,     ///< each write goes to the end; a missing file is made
    binary = 0x02,  ///< without a meaning on this platform
    in = 0x04,      ///< for reading; the file must exist, unless `app` or `trunc` makes it
    out = 0x08,     ///< for writing; without `in` and `app` it empties the file, or makes it
    trunc = 0x10,   ///< the file is emptied, or made; needs `out`
    ate = 0x20,     ///< the position starts at the end; needs `in`, `out` or `app`
  };

  /// Intended: numbered otherwise than `std::ios_base::seekdir`.
  enum class SeekDirection : std::uint8_t {
    beg = 0,
    end = 1,
    cur = 2,
  };

  virtual ~BasicOperations();

  /// @return the position in bytes from the front. Intended: the size of the file when its end was
  ///     met or the position is -1; the position after all when the file cannot be opened then
  virtual std::streampos tell() = 0;

  /// Sets the position without a look at the file: a position beyond the end shows at the next
  /// operation.
  virtual void seek(std::streampos position) = 0;

  /// Moves the position, and the stream with it. In a failed state the position becomes -1.
  /// @param offset  bytes, negative toward the front
  /// @throws std::invalid_argument when `direction` is none of the three; nothing is moved
  virtual void seek(long offset, SeekDirection direction) = 0;

  virtual bool good() const = 0;  ///< @return whether no state flag is set
  virtual bool eof() const = 0;   ///< @return whether the end of the file was met
  virtual bool fail() const = 0;  ///< @return whether an operation failed or the stream is broken
  virtual bool bad() const = 0;   ///< @return whether the stream is broken
  virtual bool operator!() const = 0;          ///< @return `fail()`
  virtual explicit operator bool() const = 0;  ///< @return the opposite of `fail()`

  /// Clears all state flags. The position keeps its value; one of -1 needs a `seek`, too.
  virtual void clear() = 0;
};

/// @return the flags that are in both
constexpr BasicOperations::OpenMode operator&(const BasicOperations::OpenMode& left,
                                              const BasicOperations::OpenMode& right) {
  return static_cast<BasicOperations::OpenMode>(static_cast<std::uint8_t>(left) &
                                                static_cast<std::uint8_t>(right));
}

/// @return the flags that are in either
constexpr BasicOperations::OpenMode operator|(const BasicOperations::OpenMode& left,
                                              const BasicOperations::OpenMode& right) {
  return static_cast<BasicOperations::OpenMode>(static_cast<std::uint8_t>(left) |
                                                static_cast<std::uint8_t>(right));
}

}  // namespace ara::per

#endif  // ARA_PER_BASIC_OPERATIONS_H_
