#ifndef FILEACCESS_STD_IOS_BASE_ADAPTER_H_
#define FILEACCESS_STD_IOS_BASE_ADAPTER_H_

#include <ios>

#include "ara/per/basic_operations.h"
#include "ara/per/log_extend.h"

namespace ara::per::helper {

/// Turns the library's open modes and seek directions into those of the standard streams.
class ios_base_adapter {
 public:
  ios_base_adapter() = delete;

  /// @throws std::invalid_argument for a value that is none of the three
  static std::ios_base::seekdir ToSeekdir(const BasicOperations::SeekDirection& direction);

  /// @param mode  exactly one flag
  /// @throws std::invalid_argument for anything else
  static std::ios_base::openmode ConvertOpenmode(const BasicOperations::OpenMode& mode);

  /// @param mode  any flags; unknown ones are left out
  static std::ios_base::openmode ToOpenmode(const BasicOperations::OpenMode& mode);

 private:
  static LogExtend* const sStdIoLog;
};

}  // namespace ara::per::helper

#endif  // FILEACCESS_STD_IOS_BASE_ADAPTER_H_
