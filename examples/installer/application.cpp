// Compares what is installed with standard input: an item a line, maybe with a remark behind " # ".
//
// usage: installer_application <database> <directory> <file> < expected
// The status is 1 when something else was found.
#include <array>
#include <cstdio>
#include <iostream>
#include <string>

#include "ara/per/persistency.h"

namespace {

using ara::per::KvsType;
using Type = KvsType::Type;

/// Numbers of a list come as the widest of their kind. A plain value counts as a list of one.
std::string ElementText(const KvsType& element) {
  const Type type = element.GetType();
  return type == Type::kSInt64    ? std::to_string(element.GetSInt64())
         : type == Type::kUInt64  ? std::to_string(element.GetUInt64())
         : type == Type::kDouble  ? std::to_string(element.GetDouble())
         : type == Type::kBoolean ? std::string(element.GetBool() ? "true" : "false")
                                  : element.GetString();
}

std::string ItemText(const ara::per::KeyValueStorage& database, const std::string& key) {
  constexpr std::array kNames = {"unknown", "float",  "double", "sint8",  "sint16",
                                 "sint32",  "sint64", "uint8",  "uint16", "uint32",
                                 "uint64",  "string", "binary", "bool",   "object"};
  KvsType value;
  database.GetValue(key, value);
  std::string text = key + ": " + kNames.at(static_cast<std::size_t>(value.GetType()));
  for (std::size_t left = value.GetNumberOfArrayItems(); left > 0; --left) {
    text += ' ' + ElementText(value.GetNextArrayItem());
  }
  return text;
}

std::string FileText(const std::string& directory, const std::string& name) {
  const auto file = ara::per::CreateFileAccessorFactory(directory)->CreateReadAccess(
      name, ara::per::BasicOperations::OpenMode::in);
  if (!file->good()) {
    return name + ": none";
  }
  std::string content(file->fileSize(), ' ');
  file->read(content.data(), content.length());
  for (std::size_t zero = 0; (zero = content.find('\0', zero)) != std::string::npos;) {
    content.replace(zero, 1, "\\0");
  }
  return name + ": \"" + content + '"';
}

/// Compares an item with the next one that is expected.
bool IsExpected(const std::string& item) {
  std::string line;
  if (!std::getline(std::cin, line)) {
    line = "nothing";
  }
  const bool isSame = item == line.substr(0, line.find(" # "));
  std::cout << "  expected " << line << (isSame ? "\n     found " : "\nUNEXPECTED ") << item
            << '\n';
  return isSame;
}

}  // namespace

int main(int argc, char* argv[]) {
  if (argc != 4) {
    std::cerr << "usage: installer_application <database> <directory> <file> < expected\n";
    return 2;
  }
  bool isSame = true;
  const auto database = ara::per::CreateKeyValueStorage(argv[1]);
  for (const std::string& key : database->GetAllKeys()) {
    isSame = IsExpected(ItemText(*database, key)) && isSame;
  }
  isSame = IsExpected(FileText(argv[2], argv[3])) && isSame;
  return isSame && std::cin.peek() == EOF ? 0 : 1;
}
