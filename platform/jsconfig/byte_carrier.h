#ifndef PLATFORM_JSCONFIG_BYTE_CARRIER_H_
#define PLATFORM_JSCONFIG_BYTE_CARRIER_H_

#include <cstddef>
#include <string>
#include <string_view>

namespace jsconfig {

// The parser refuses bytes that are not valid UTF-8. A text that holds any is taken past it with
// each such byte replaced by a character of the range U+10FF00 to U+10FFFF, its carrier, which is
// turned back in the decoded strings. Where the text holds genuine characters of that range, raw or
// escaped, their bytes are carried the same way, so that they come back too.

/// The JSON text `text` with carriers in place of the bytes that are not valid UTF-8.
std::string CarryBytes(std::string_view text);

/// Writes the decoded string `text` to `target` with the carried bytes in place of their carriers.
/// @param target  has room for `text.size()` bytes; may not overlap `text`
/// @return the number of bytes written
std::size_t RestoreBytes(std::string_view text, char* target);

}  // namespace jsconfig

#endif  // PLATFORM_JSCONFIG_BYTE_CARRIER_H_
