#include "ara/per/logic_error_exception.h"
#include "ara/per/physical_storage_error_exception.h"

namespace ara::per {
namespace {

std::string PlaceText(const char* file, const char* function, int line) {
  return std::string(file) + " : " + std::to_string(line) + " : " + function + "() : ";
}

}  // namespace

LogicErrorException::LogicErrorException(const std::string& text) : message(text) {}
LogicErrorException::~LogicErrorException() = default;
const char* LogicErrorException::what() const noexcept { return message.c_str(); }

PhysicalStorageErrorException::PhysicalStorageErrorException(const std::string& text)
    : message(text) {}
PhysicalStorageErrorException::~PhysicalStorageErrorException() = default;
const char* PhysicalStorageErrorException::what() const noexcept { return message.c_str(); }

std::string GetCastErrorMessage(const char* file, const char* function, int line, std::string key,
                                std::string type, std::string status) {
  // Intended: two blanks in front of "key" and of "type".
  return PlaceText(file, function, line) + " key: " + key + " : " + " type = " + type +
         " : status = " + status + " incorrect cast requested.";
}

std::string GetAllocationErrorMessage(const char* file, const char* function, int line) {
  return PlaceText(file, function, line) + "memory allocation failed.";
}

}  // namespace ara::per
