#ifndef ARA_PER_LOG_EXTEND_H_
#define ARA_PER_LOG_EXTEND_H_

#include <cstddef>
#include <string>

#include "ara/log/logging.h"
#include "ara/per/export.h"

namespace ara::per {

/// The place a log line comes from, already composed as the text "[file][line]", or a whole line.
/// It is made from a literal, so that it costs nothing at run time.
class LogPlace {
 public:
  template <std::size_t kSize>
  constexpr explicit LogPlace(const char (&prefix)[kSize]) : text(prefix), length(kSize - 1) {}

  const char* const text;
  const std::size_t length;
};

/// The one logging object of the library: formats a line in the manner of `printf`, puts the
/// source file and line in front and hands the text to one `ara::log::Logger` of the process.
///
/// The shared object is created while the library loads and is never deleted. Filtering by level
/// is left to `ara::log`; the level kept here is not looked at. All operations but
/// `getLogExtenObject` and `logPrint` are for one thread.
class ARA_PER_EXPORT LogExtend {
 public:
  /// Keeps `name` ("PersistencyService" when empty) and `level`; creates no logger, so that lines
  /// printed before any logger exists are lost.
  LogExtend(std::string name, int level);

  /// Keeps `name` as above with level 4 and creates the logger through `logInit`.
  explicit LogExtend(std::string name);

  LogExtend(const LogExtend&) = delete;
  LogExtend& operator=(const LogExtend&) = delete;

  /// Intended: the end of any `LogExtend`, also of a local one, makes the process forget its
  /// shared object. Pointers taken before stay usable; the next `getLogExtenObject` creates and
  /// announces a new object.
  virtual ~LogExtend();

  /// Gives the shared object and creates it when there is none, which prints
  /// "option the log object" and a line end on standard output. Only the first caller's `name`
  /// counts. Safe from any thread.
  /// Intended: the first test takes no lock, so that no `LogExtend` may end at the same time.
  /// @return never null; the caller does not own it
  /// @throws std::system_error when the lock around the creation fails
  static LogExtend* getLogExtenObject(std::string name);

  /// Creates a logger of the context "PERSISTENCY" at verbose level, whatever `level` says, and
  /// keeps it when the process has none yet; a later logger is dropped.
  /// @return always 0
  int logInit(ara::log::LogLevel level);

  /// Keeps `level`. Intended: changes nothing in what is printed.
  void setLogLevel(ara::log::LogLevel level);

  /// Prints the line "[file][line]message".
  ///
  /// A line is cut to 1023 bytes. Nothing is printed for a level outside `kFatal` to `kVerbose`,
  /// nor before the process has a logger. Safe from any thread.
  /// @param format  as `printf`'s; a null pointer for `%s` prints "(null)"
  void logPrint(ara::log::LogLevel level, std::string file, int line, const char* format, ...)
      __attribute__((format(printf, 5, 6)));

  /// Prints a line that was composed as a whole beforehand, message and all.
  void logPrint(ara::log::LogLevel level, const LogPlace& line);

  /// The line of the first form from a place that was composed beforehand.
  void logPrint(ara::log::LogLevel level, const LogPlace& place, const char* format, ...)
      __attribute__((format(printf, 4, 5)));

 private:
  static LogExtend* mLogObj;
  static ara::log::Logger* mLogModule;

  static void emit(ara::log::LogLevel level, const char* line);

  std::string m_name;
  ara::log::LogLevel m_level;
};

}  // namespace ara::per

#endif  // ARA_PER_LOG_EXTEND_H_
