#ifndef SUPPORT_JSON_VALUE_CLASS_H_
#define SUPPORT_JSON_VALUE_CLASS_H_

#include <iostream>

namespace ara::per {

/// The classes that `jsconfig::CObject::getType` gives a token.
enum JsonValueClass : int {
  kJsonNull = 0,
  kJsonBoolean = 1,
  kJsonAbsent = 2,
  kJsonUnsigned = 3,
  kJsonSigned = 4,
  kJsonFloating = 5,
  kJsonText = 6,
  kJsonArray = 7,
  kJsonObject = 8,
};

/// Whether a token of this class cannot be used, which is then told on standard output.
/// Intended: this is the only test; a text or a number in place of an object passes it.
inline bool RefusesJsonClass(int valueClass) {
  if (valueClass != kJsonNull && valueClass != kJsonAbsent) {
    return false;
  }
  std::cout << "the json type is invalid" << std::endl;
  return true;
}

}  // namespace ara::per

#endif  // SUPPORT_JSON_VALUE_CLASS_H_
