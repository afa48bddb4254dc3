#ifndef KEY_VALUE_STORAGE_HEX_TEXT_H_
#define KEY_VALUE_STORAGE_HEX_TEXT_H_

#include <cstddef>
#include <iomanip>
#include <sstream>
#include <string>

namespace ara::per {

/// Two lower-case digits a byte, without prefix or separator.
inline std::string HexText(const unsigned char* bytes, std::size_t count) {
  std::ostringstream text;
  text << std::hex << std::setfill('0');
  for (std::size_t i = 0; i < count; ++i) {
    text << std::setw(2) << static_cast<unsigned int>(bytes[i]);
  }
  return text.str();
}

/// Reverses `HexText` for a text of even length, into half as many bytes.
/// Intended: each pair is read as a number by a stream; a pair that is none gives 0, and what a
/// stream makes of a sign or a blank stays.
inline void BytesOfHexText(const std::string& text, unsigned char* bytes) {
  for (std::size_t i = 0; i < text.length(); i += 2) {
    std::istringstream pair(text.substr(i, 2));
    unsigned short number = 0;
    pair >> std::hex >> number;
    bytes[i / 2] = static_cast<unsigned char>(number);
  }
}

}  // namespace ara::per

#endif  // KEY_VALUE_STORAGE_HEX_TEXT_H_
