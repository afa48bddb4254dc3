#ifndef ARA_PER_PHYSICAL_STORAGE_ERROR_EXCEPTION_H_
#define ARA_PER_PHYSICAL_STORAGE_ERROR_EXCEPTION_H_

#include <exception>
#include <string>

#include "ara/per/export.h"

namespace ara::per {

/// Reports a fault while reading stored data.
class ARA_PER_EXPORT PhysicalStorageErrorException : public std::exception {
 public:
  explicit PhysicalStorageErrorException(const std::string& text);
  PhysicalStorageErrorException(const PhysicalStorageErrorException&) = default;
  PhysicalStorageErrorException& operator=(const PhysicalStorageErrorException&) = default;
  ~PhysicalStorageErrorException() override;

  /// @return the whole message; valid as long as the exception object
  const char* what() const noexcept override;

 private:
  std::string message;
};

/// Composes the message of a failed allocation. Safe from any thread.
/// @param file,line  source place of the throw
/// @param function  name of the operation without brackets
ARA_PER_EXPORT std::string GetAllocationErrorMessage(const char* file, const char* function,
                                                     int line);

}  // namespace ara::per

#endif  // ARA_PER_PHYSICAL_STORAGE_ERROR_EXCEPTION_H_
