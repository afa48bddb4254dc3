#include "crc/buffer.h"

#include <cctype>
#include <iomanip>
#include <stdexcept>
#include <utility>

#include "ara/per/log_extend.h"
#include "support/log_here.h"

namespace crc {

using ara::log::LogLevel;
using ara::per::LogExtend;

namespace {

/// Logs `line` as a warning and throws.
template <class Exception>
[[noreturn]] void Refuse(LogExtend& log, const ara::per::LogPlace& line, const char* what) {
  log.logPrint(LogLevel::kWarn, line);
  throw Exception(what);
}

}  // namespace

BufferView::BufferView(const unsigned char* bytes, unsigned long count)
    : data(bytes), length(count), log(LogExtend::getLogExtenObject("PersistencyService")) {
  if (!isValid()) {
    Refuse<std::invalid_argument>(*log, ARA_PER_LINE("BufferView::BufferView data is incorrect"),
                                  "data is incorrect");
  }
}

BufferView::BufferView(const std::vector<unsigned char>& buf, unsigned long count)
    : data(buf.data()), length(count), log(LogExtend::getLogExtenObject("PersistencyService")) {
  // Intended: a warning without a cause.
  log->logPrint(LogLevel::kWarn,
                ARA_PER_LINE("BufferView::BufferView(const Buffer& buf, size_t length)"));
  if (length == 0 || length > buf.size()) {
    Refuse<std::length_error>(*log, ARA_PER_LINE("BufferView::BufferView Length is incorrect."),
                              "Length is incorrect.");
  }
}

BufferView::BufferView(const std::vector<unsigned char>& buf, unsigned long begin,
                       unsigned long end)
    : data(buf.data()),
      length(end - begin),
      log(LogExtend::getLogExtenObject("PersistencyService")) {
  if (begin > end) {
    Refuse<std::invalid_argument>(
        *log, ARA_PER_LINE("BufferView::BufferView Incorrect buffer boundaries (begin > end)."),
        "Incorrect buffer boundaries (begin > end).");
  }
  // Intended: a warning without a cause.
  log->logPrint(LogLevel::kWarn, ARA_PER_HERE, "BufferView::BufferView buf.size() %d",
                static_cast<int>(buf.size()));
  if (end > buf.size()) {
    Refuse<std::out_of_range>(
        *log, ARA_PER_LINE("BufferView::BufferView Length is incorrect (end > buf.size())."),
        "Length is incorrect (end > buf.size()).");
  }
  data += begin;
}

BufferView::BufferView(BufferView&& other) noexcept
    : data(std::exchange(other.data, nullptr)),
      length(std::exchange(other.length, 0)),
      log(nullptr) {}

BufferView& BufferView::operator=(BufferView&& other) noexcept {
  if (this != &other) {
    data = std::exchange(other.data, nullptr);
    length = std::exchange(other.length, 0);
    log = other.log;
  }
  return *this;
}

bool BufferView::isValid() const { return length == 0 || data != nullptr; }

}  // namespace crc

std::ostream& operator<<(std::ostream& stream, const std::vector<unsigned char>& bytes) {
  constexpr char kDigits[] = "0123456789abcdef";
  for (const unsigned char byte : bytes) {
    if (std::isupper(byte) != 0) {
      stream << static_cast<char>(byte);
    } else {
      // The digits do not go by the stream's flags; the fill and the base are what it keeps.
      stream << '[' << std::setfill('0') << kDigits[byte >> 4] << kDigits[byte & 0x0F] << ']'
             << std::dec;
    }
  }
  return stream;
}
