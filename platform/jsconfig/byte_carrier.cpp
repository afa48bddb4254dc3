#include "byte_carrier.h"

#include <algorithm>
#include <cctype>
#include <cstdint>

namespace jsconfig {
namespace {

constexpr std::size_t kCarrierSize = 4;
constexpr std::size_t kEscapeSize = 12;  // \uDBFF\uDFxx

std::uint8_t ByteAt(std::string_view text, std::size_t index) {
  return static_cast<std::uint8_t>(text[index]);
}

void AppendCarrier(std::string& target, std::uint8_t byte) {
  target += "\xF4\x8F";
  target += static_cast<char>(0xBC | byte >> 6);
  target += static_cast<char>(0x80 | (byte & 0x3F));
}

bool StartsWithCarrier(std::string_view text) {
  return text.size() >= kCarrierSize && text.compare(0, 2, "\xF4\x8F") == 0 &&
         ByteAt(text, 2) >= 0xBC && ByteAt(text, 2) <= 0xBF && (ByteAt(text, 3) & 0xC0) == 0x80;
}

std::uint8_t CarriedByte(std::string_view carrier) {
  return static_cast<std::uint8_t>((ByteAt(carrier, 2) & 0x03) << 6 | (ByteAt(carrier, 3) & 0x3F));
}

/// Whether `text` starts with the escaped form of a character of the range of carriers. It does not
/// if a further backslash stands in front, but the parser refuses that text either way.
bool StartsWithEscapedCarrier(std::string_view text) {
  constexpr std::string_view kPattern = "\\udbff\\udf";
  const auto isHexDigit = [](char c) { return std::isxdigit(static_cast<unsigned char>(c)) != 0; };
  const auto matches = [&](char wanted, char c) {  // the digits in either case
    return c == wanted || (isHexDigit(c) && std::tolower(static_cast<unsigned char>(c)) == wanted);
  };
  return text.size() >= kEscapeSize &&
         std::equal(kPattern.begin(), kPattern.end(), text.begin(), matches) &&
         isHexDigit(text[10]) && isHexDigit(text[11]);
}

/// Length of the valid UTF-8 sequence that the text, which is not empty, starts with; 0 without
/// one.
std::size_t ValidSequence(std::string_view text) {
  const std::uint8_t lead = ByteAt(text, 0);
  if (lead < 0x80) {
    return 1;
  }
  if (lead < 0xC2 || lead > 0xF4) {
    return 0;
  }
  const std::size_t length = lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
  if (text.size() < length) {
    return 0;
  }
  // Only the second byte has a range of its own: it excludes overlong forms, surrogates, and what
  // lies beyond the last code point.
  const std::uint8_t low = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
  const std::uint8_t high = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
  if (ByteAt(text, 1) < low || ByteAt(text, 1) > high) {
    return 0;
  }
  for (std::size_t i = 2; i < length; ++i) {
    if ((ByteAt(text, i) & 0xC0) != 0x80) {
      return 0;
    }
  }
  return length;
}

void CarryAll(std::string& target, std::string_view bytes) {
  for (const char byte : bytes) {
    AppendCarrier(target, static_cast<std::uint8_t>(byte));
  }
}

}  // namespace

std::string CarryBytes(std::string_view text) {
  std::string carried;
  carried.reserve(text.size() + text.size() / 8);
  while (!text.empty()) {
    std::size_t taken = ValidSequence(text);
    if (taken == 0 || StartsWithCarrier(text)) {
      taken = std::max<std::size_t>(taken, 1);
      CarryAll(carried, text.substr(0, taken));
    } else if (StartsWithEscapedCarrier(text)) {
      taken = kEscapeSize;
      const std::string lowByte(text.substr(kEscapeSize - 2, 2));
      std::string character;
      AppendCarrier(character, static_cast<std::uint8_t>(std::stoul(lowByte, nullptr, 16)));
      CarryAll(carried, character);
    } else {
      carried += text.substr(0, taken);
    }
    text.remove_prefix(taken);
  }
  return carried;
}

std::size_t RestoreBytes(std::string_view text, char* target) {
  char* end = target;
  while (!text.empty()) {
    const bool isCarrier = StartsWithCarrier(text);
    *end++ = isCarrier ? static_cast<char>(CarriedByte(text)) : text.front();
    text.remove_prefix(isCarrier ? kCarrierSize : 1);
  }
  return static_cast<std::size_t>(end - target);
}

}  // namespace jsconfig
