#ifndef TESTS_SUPPORT_THROWN_H_
#define TESTS_SUPPORT_THROWN_H_

#include <string>

namespace ara::per::testing {

/// The text of the `Exception` that `operation` throws; a note when it throws none. Others go out.
template <class Exception, class Operation>
std::string Thrown(Operation&& operation) {
  try {
    operation();
  } catch (const Exception& error) {
    return error.what();
  }
  return "no exception";
}

}  // namespace ara::per::testing

#endif  // TESTS_SUPPORT_THROWN_H_
