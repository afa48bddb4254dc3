#ifndef PLATFORM_JSCONFIG_JSON_TEXT_READER_H_
#define PLATFORM_JSCONFIG_JSON_TEXT_READER_H_

#include <memory>
#include <string>
#include <string_view>

#include "json_tree.h"

namespace jsconfig {

/// Reads the JSON document in the file at `path`, or in `text`.
/// @param error  gets a text that says what is wrong, if anything is
/// @return the tree; null on failure
std::unique_ptr<Tree> ReadJsonFile(const std::string& path, std::string& error);
std::unique_ptr<Tree> ReadJsonText(std::string_view text, std::string& error);

}  // namespace jsconfig

#endif  // PLATFORM_JSCONFIG_JSON_TEXT_READER_H_
