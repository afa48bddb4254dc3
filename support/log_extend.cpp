#include "ara/per/log_extend.h"

#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <mutex>
#include <string_view>
#include <utility>

#include "support/number_text.h"

namespace ara::per {
namespace {

using ara::log::LogLevel;

template <std::size_t kBlock>
void CopyBlocks(char* to, const char* from, std::size_t count) {
  const std::size_t last = count - kBlock;
  for (std::size_t i = 0; i < last; i += kBlock) {
    std::memcpy(to + i, from + i, kBlock);
  }
  std::memcpy(to + last, from + last, kBlock);
}

/// `memcpy` for the pieces of a line, which are mostly too short to be worth its call.
void CopyPiece(char* to, const char* from, std::size_t count) {
  if (count > 64) {
    std::memcpy(to, from, count);
  } else if (count >= 16) {
    CopyBlocks<16>(to, from, count);
  } else if (count >= 8) {
    CopyBlocks<8>(to, from, count);
  } else {
    for (std::size_t i = 0; i < count; ++i) {
      to[i] = from[i];
    }
  }
}

/// One line under construction; what does not fit is cut.
class LineBuffer {
 public:
  void append(std::string_view text) {
    const std::size_t count = std::min(text.size(), room());
    CopyPiece(end_, text.data(), count);
    end_ += count;
  }

  void appendString(const char* text, std::size_t precision = kSize) {
    if (text == nullptr) {
      text = "(null)";
    }
    append({text, ::strnlen(text, std::min(precision, room()))});
  }

  template <class Number>
  void appendNumber(Number value) {
    end_ = std::min(WriteNumber(end_, value), limit());
  }

  /// `%s`, `%.*s`, `%d`, `%u` and `%f`, which nearly every line is made of, are written here; from
  /// the first other conversion on the rest of the format is `vsnprintf`'s.
  void appendFormatted(const char* format, std::va_list arguments) {
    while (true) {
      const char* const percent = ::strchrnul(format, '%');
      append({format, static_cast<std::size_t>(percent - format)});
      if (*percent == '\0') {
        return;
      }
      switch (percent[1]) {
        case 's':
          appendString(va_arg(arguments, const char*));
          break;
        case 'd':
          appendNumber(va_arg(arguments, int));
          break;
        case 'u':
          appendNumber(va_arg(arguments, unsigned int));
          break;
        case 'f':
          appendNumber(va_arg(arguments, double));
          break;
        case '.':
          if (percent[2] == '*' && percent[3] == 's') {
            // A negative precision, which is none, becomes a large number.
            const auto precision = static_cast<std::size_t>(va_arg(arguments, int));
            appendString(va_arg(arguments, const char*), precision);
            format = percent + 4;
            continue;
          }
          [[fallthrough]];
        default:
          appendRest(percent, arguments);
          return;
      }
      format = percent + 2;
    }
  }

  /// Ends the text and gives it.
  const char* text() {
    *end_ = '\0';
    return buffer_.data();
  }

 private:
  static constexpr std::size_t kSize = 1024;

  char* limit() { return buffer_.data() + kSize - 1; }
  std::size_t room() { return static_cast<std::size_t>(limit() - end_); }

// The rest of a format that the compiler has checked where it was given.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
  void appendRest(const char* format, std::va_list arguments) {
    const int count = std::vsnprintf(end_, room() + 1, format, arguments);
    if (count > 0) {
      end_ += std::min(static_cast<std::size_t>(count), room());
    }
  }
#pragma GCC diagnostic pop

  // Left unset: only what was written is ever read. A number may be written beyond the line's size
  // before it is cut.
  // NOLINTNEXTLINE(cppcoreguidelines-pro-type-member-init)
  std::array<char, kSize + kNumberTextSize<double>> buffer_;
  char* end_ = buffer_.data();
};

}  // namespace

// Needs no initialisation at run time: the other files' static initialisers come here.
std::mutex g_mutex;
LogExtend* LogExtend::mLogObj = nullptr;
ara::log::Logger* LogExtend::mLogModule = nullptr;

LogExtend::LogExtend(std::string name, int level)
    : m_name(name.empty() ? "PersistencyService" : std::move(name)),
      m_level(static_cast<LogLevel>(level)) {}

LogExtend::LogExtend(std::string name)
    : LogExtend(std::move(name), static_cast<int>(LogLevel::kInfo)) {
  logInit(LogLevel::kInfo);
}

LogExtend::~LogExtend() { mLogObj = nullptr; }

LogExtend* LogExtend::getLogExtenObject(std::string name) {
  if (mLogObj != nullptr) {
    return mLogObj;
  }
  const std::lock_guard<std::mutex> guard(g_mutex);
  if (mLogObj == nullptr) {
    // The first caller is a static initialiser, which may run before those of <iostream>.
    static const std::ios_base::Init streamsReady;
    std::cout << "option the log object" << std::endl;
    mLogObj = new LogExtend(std::move(name));  // never deleted: lives to the end of the process
  }
  return mLogObj;
}

int LogExtend::logInit(LogLevel level) {
  m_level = level;
  // Intended: the logger is made at verbose level, whatever was asked for.
  ara::log::Logger& logger =
      ara::log::CreateLogger("PERSISTENCY", "First context", LogLevel::kVerbose);
  if (mLogModule == nullptr) {
    mLogModule = &logger;
  }
  return 0;
}

void LogExtend::setLogLevel(LogLevel level) { m_level = level; }

void LogExtend::logPrint(LogLevel level, std::string file, int line, const char* format, ...) {
  LineBuffer buffer;
  buffer.append("[");
  buffer.appendString(file.c_str());
  buffer.append("][");
  buffer.appendNumber(line);
  buffer.append("]");
  std::va_list arguments;
  va_start(arguments, format);
  buffer.appendFormatted(format, arguments);
  va_end(arguments);
  emit(level, buffer.text());
}

void LogExtend::logPrint(LogLevel level, const LogPlace& place, const char* format, ...) {
  LineBuffer buffer;
  buffer.append({place.text, place.length});
  std::va_list arguments;
  va_start(arguments, format);
  buffer.appendFormatted(format, arguments);
  va_end(arguments);
  emit(level, buffer.text());
}

void LogExtend::logPrint(LogLevel level, const LogPlace& line) { emit(level, line.text); }

void LogExtend::emit(LogLevel level, const char* line) {
  if (mLogModule == nullptr) {
    return;
  }
  const auto print = [line](ara::log::LogStream stream) {
    stream << line;
    stream.Flush();
  };
  switch (level) {
    case LogLevel::kFatal:
      return print(mLogModule->LogFatal());
    case LogLevel::kError:
      return print(mLogModule->LogError());
    case LogLevel::kWarn:
      return print(mLogModule->LogWarn());
    case LogLevel::kInfo:
      return print(mLogModule->LogInfo());
    case LogLevel::kDebug:
      return print(mLogModule->LogDebug());
    case LogLevel::kVerbose:
      return print(mLogModule->LogVerbose());
    default:
      return;
  }
}

}  // namespace ara::per
