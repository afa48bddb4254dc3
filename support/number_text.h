#ifndef SUPPORT_NUMBER_TEXT_H_
#define SUPPORT_NUMBER_TEXT_H_

#include <charconv>
#include <cstddef>
#include <limits>
#include <type_traits>

namespace ara::per {

/// The most characters that `WriteNumber` writes: a sign and all digits, for a floating number also
/// the point and six decimals.
template <class Number>
constexpr std::size_t kNumberTextSize =
    std::is_floating_point_v<Number> ? std::numeric_limits<Number>::max_exponent10 + 9
                                     : std::numeric_limits<Number>::digits10 + 2;

/// Writes a number as `printf` does, with `%d`, `%u`, `%ld` or `%lu` for an integer and `%f` for a
/// floating number, at a fraction of its cost. The decimal point is always a dot.
/// @param to  room for `kNumberTextSize<Number>` characters; no zero byte is added
/// @return the end of the text
template <class Number>
char* WriteNumber(char* to, Number value) {
  char* const end = to + kNumberTextSize<Number>;
  if constexpr (std::is_floating_point_v<Number>) {
    return std::to_chars(to, end, value, std::chars_format::fixed, 6).ptr;
  } else {
    return std::to_chars(to, end, value).ptr;
  }
}

}  // namespace ara::per

#endif  // SUPPORT_NUMBER_TEXT_H_
