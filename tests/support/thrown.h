#ifndef TESTS_SUPPORT_THROWN_H_
#define TESTS_SUPPORT_THROWN_H_

#include <exception>
#include <string>

namespace ara::per::testing {

/// The text of the exception that `operation` throws, which must be an `Exception`; a note when it
/// throws none.
template <class Exception, class Operation>
std::string Thrown(Operation&& operation) {
  try {
    operation();
  } catch (const Exception& error) {
    return error.what();
  } catch (const std::exception& error) {
    return std::string("another exception: ") + error.what();
  }
  return "no exception";
}

}  // namespace ara::per::testing

#endif  // TESTS_SUPPORT_THROWN_H_
