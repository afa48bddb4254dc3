#ifndef TESTS_SUPPORT_VALUE_TEXT_H_
#define TESTS_SUPPORT_VALUE_TEXT_H_

#include <string>

#include "ara/per/internal_access.h"
#include "ara/per/kvs_type.h"

namespace ara::per::testing {

/// All of a value in one line: key, type name and content, with square brackets around an array.
/// Texts stand in apostrophes, unsigned numbers end with "u", floating ones have six decimals, and
/// a status other than `kSuccess` follows as "!3". For example `list:uint16=[1u,2u]`.
inline std::string ValueText(const KvsType& value) {
  InternalAccess access;
  KvsTypeInternalType store = access.GetInternalValue(value);
  store.resetGetter();
  std::string content;
  for (std::size_t i = 0; i < store.GetSize(); ++i) {
    const KvsType item = store.GetKvsTypeNext();
    content += i == 0 ? "" : ",";
    switch (store.GetType()) {
      case KvsTypeInternalType::Kind::kDouble:
        content += std::to_string(item.GetDouble());
        break;
      case KvsTypeInternalType::Kind::kInt:
        content += std::to_string(item.GetSInt64());
        break;
      case KvsTypeInternalType::Kind::kUint:
        content += std::to_string(item.GetUInt64()) + "u";
        break;
      case KvsTypeInternalType::Kind::kBool:
        content += item.GetBool() ? "true" : "false";
        break;
      case KvsTypeInternalType::Kind::kString:
        content += "'" + item.GetString() + "'";
        break;
      default:
        content += ValueText(item);
        break;
    }
  }
  if (store.GetParsedAsArray()) {
    content = "[" + content + "]";
  }
  const bool isGood = value.GetStatus() == KvsType::Status::kSuccess;
  return value.GetKey() + ":" + access.getKvsTypeAsString(value, value.GetType()) + "=" + content +
         (isGood ? "" : "!" + std::to_string(static_cast<int>(value.GetStatus())));
}

/// The texts of all values of a list of pointers, with a blank between two.
template <class List>
std::string ValueTexts(const List& items) {
  std::string texts;
  for (const auto& item : items) {
    texts += (texts.empty() ? "" : " ") + ValueText(*item);
  }
  return texts;
}

}  // namespace ara::per::testing

#endif  // TESTS_SUPPORT_VALUE_TEXT_H_
