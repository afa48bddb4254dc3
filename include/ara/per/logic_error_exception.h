#ifndef ARA_PER_LOGIC_ERROR_EXCEPTION_H_
#define ARA_PER_LOGIC_ERROR_EXCEPTION_H_

#include <exception>
#include <string>

#include "ara/per/export.h"

namespace ara::per {

/// Reports wrong use of a value, above all a read as another type than the stored one.
/// It derives from `std::exception` and, whatever its name suggests, not from `std::logic_error`.
class ARA_PER_EXPORT LogicErrorException : public std::exception {
 public:
  explicit LogicErrorException(const std::string& text);
  LogicErrorException(const LogicErrorException&) = default;
  LogicErrorException& operator=(const LogicErrorException&) = default;
  ~LogicErrorException() override;

  /// @return the whole message; valid as long as the exception object
  const char* what() const noexcept override;

 private:
  std::string message;
};

/// Composes the message of a read as a wrong type. Safe from any thread.
/// @param file,line  source place of the throw
/// @param function  the getter's name without brackets
/// @param key,type,status  what the value says of itself, as text
ARA_PER_EXPORT std::string GetCastErrorMessage(const char* file, const char* function, int line,
                                               std::string key, std::string type,
                                               std::string status);

}  // namespace ara::per

#endif  // ARA_PER_LOGIC_ERROR_EXCEPTION_H_
