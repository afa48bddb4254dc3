#ifndef JSONPARSER_JSON_TEXT_H_
#define JSONPARSER_JSON_TEXT_H_

#include <sys/types.h>

#include <array>
#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <type_traits>

#include "ara/per/log_extend.h"
#include "support/number_text.h"

namespace ara::per {

/// The parts that a piece of text is made of: texts, and numbers as `printf` writes them.
/// Intended: nothing is escaped, and infinity and not-a-number are written, which is no JSON.
inline void AppendPart(std::string& text, std::string_view part) { text.append(part); }
inline void AppendPart(std::string& text, char part) { text.push_back(part); }
template <class Number>
std::enable_if_t<std::is_arithmetic_v<Number>> AppendPart(std::string& text, Number part) {
  std::array<char, kNumberTextSize<Number>> digits;
  text.append(digits.data(), WriteNumber(digits.data(), part));
}

/// Puts a piece in front of the closing bracket of `text`, behind a comma unless it is the first.
/// @param length  the length of `text` as the builder keeps it; 2 means that nothing was added yet
/// @param logPiece  is given the piece, which ends with a zero byte
/// @return whether the text has grown by the length of the piece. Intended: so only the first
///     addition gives true; the comma of the later ones is not counted, and nobody looks.
template <class LogPiece, class... Parts>
bool AddPiece(std::string& text, int& length, LogPiece&& logPiece, Parts... parts) {
  const char bracket = text.back();
  const std::size_t end = text.size() - 1;
  text.pop_back();
  if (length != 2) {
    text.push_back(',');
  }
  const std::size_t begin = text.size();
  try {
    (AppendPart(text, parts), ...);
    logPiece(text.c_str() + begin);
  } catch (...) {  // the text is as before
    text.resize(end);
    text.push_back(bracket);
    throw;
  }
  const long expected = length + static_cast<long>(text.size() - begin);
  text.push_back(bracket);
  length = static_cast<int>(text.size());
  return expected == length;
}

/// Overwrites the file at `path` in place with the first `length` bytes of `text` and flushes the
/// whole file system.
/// @param pauseMicroseconds  between the background "touch" of a missing file and the opening
/// @param place  of the line that tells why the file cannot be opened
/// @param logWritten  is given what `write` gave, while the file is still locked
/// @return 0, or -1 when the file cannot be opened
int SaveText(const std::string& path, const std::string& text, int length,
             unsigned int pauseMicroseconds, LogExtend& log, const LogPlace& place,
             const std::function<void(ssize_t)>& logWritten);

}  // namespace ara::per

#endif  // JSONPARSER_JSON_TEXT_H_
