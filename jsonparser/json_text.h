#ifndef JSONPARSER_JSON_TEXT_H_
#define JSONPARSER_JSON_TEXT_H_

#include <array>
#include <functional>
#include <string>
#include <string_view>

#include "support/number_text.h"

namespace ara::per {

/// The piece of an array or object text that one addition brings, as the parts it is made of.
/// A part is a text or a number; numbers read as `printf` writes them.
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
  text.pop_back();
  if (length != 2) {
    text.push_back(',');
  }
  const std::size_t begin = text.size();
  (AppendPart(text, parts), ...);
  logPiece(text.c_str() + begin);
  const long expected = length + static_cast<long>(text.size() - begin);
  text.push_back(bracket);
  length = static_cast<int>(text.size());
  return expected == length;
}

/// How the two builders differ in writing a file.
struct SaveStyle {
  unsigned int pauseMicroseconds;  // between the background "touch" and the opening
  std::function<void(const char* reason)> logOpenFailure;
  std::function<void(int written)> logWritten;
};

/// Overwrites the file at `path` in place with the first `length` bytes of `text` and flushes the
/// whole file system.
/// @return 0, or -1 when the file cannot be opened
int SaveText(const std::string& path, const std::string& text, int length, const SaveStyle& style);

}  // namespace ara::per

#endif  // JSONPARSER_JSON_TEXT_H_
