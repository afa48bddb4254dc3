#ifndef PLATFORM_JSCONFIG_JSON_TEXT_WRITER_H_
#define PLATFORM_JSCONFIG_JSON_TEXT_WRITER_H_

#include <string>

#include "json_tree.h"

namespace jsconfig {

/// Appends the JSON text of a boolean or a number.
void AppendScalar(std::string& target, const Node& node);

/// The JSON text of the token and all that is in it, without blanks.
std::string WriteJsonText(const Node& root);

}  // namespace jsconfig

#endif  // PLATFORM_JSCONFIG_JSON_TEXT_WRITER_H_
