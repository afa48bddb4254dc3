#include "fileaccess/std_ios_base_adapter.h"

#include <array>
#include <stdexcept>

#include "support/log_here.h"

namespace ara::per::helper {

using ara::log::LogLevel;
using OpenMode = BasicOperations::OpenMode;
using SeekDirection = BasicOperations::SeekDirection;

namespace {

constexpr std::array<OpenMode, 6> modes = {OpenMode::app, OpenMode::binary, OpenMode::in,
                                           OpenMode::out, OpenMode::trunc,  OpenMode::ate};

}  // namespace

LogExtend* const ios_base_adapter::sStdIoLog = LogExtend::getLogExtenObject("PersistencyService");

std::ios_base::seekdir ios_base_adapter::ToSeekdir(const SeekDirection& direction) {
  switch (direction) {
    case SeekDirection::beg:
      return std::ios_base::beg;
    case SeekDirection::end:
      return std::ios_base::end;
    case SeekDirection::cur:
      return std::ios_base::cur;
  }
  sStdIoLog->logPrint(
      LogLevel::kDebug,
      ARA_PER_LINE("std::ios_base::seekdir ToSeekdir Seek_dir not handled in switch statement"));
  throw std::invalid_argument("Seek_dir not handled in switch statement");
}

std::ios_base::openmode ios_base_adapter::ConvertOpenmode(const OpenMode& mode) {
  sStdIoLog->logPrint(LogLevel::kDebug, ARA_PER_HERE,
                      "std::ios_base::openmode ConvertOpenmode openmode is %d",
                      static_cast<int>(mode));
  switch (mode) {
    case OpenMode::app:
      return std::ios_base::app;
    case OpenMode::binary:
      return std::ios_base::binary;
    case OpenMode::in:
      return std::ios_base::in;
    case OpenMode::out:
      return std::ios_base::out;
    case OpenMode::trunc:
      return std::ios_base::trunc;
    case OpenMode::ate:
      return std::ios_base::ate;
  }
  throw std::invalid_argument("Could not convert given OpenMode");
}

std::ios_base::openmode ios_base_adapter::ToOpenmode(const OpenMode& mode) {
  std::ios_base::openmode stdMode{};
  for (const OpenMode flag : modes) {
    if ((flag & mode) != OpenMode{}) {
      stdMode |= ConvertOpenmode(flag);
    }
  }
  // Intended: the doubled letter.
  sStdIoLog->logPrint(LogLevel::kDebug, ARA_PER_HERE,
                      "std::ios_base::openmode ToOpenmodee stdom is %d", static_cast<int>(stdMode));
  return stdMode;
}

}  // namespace ara::per::helper
