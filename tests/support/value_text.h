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
  using Kind = KvsTypeInternalType::Kind;
  InternalAccess access;
  KvsTypeInternalType store = access.GetInternalValue(value);
  store.resetGetter();
  std::string content;
  for (std::size_t i = 0; i < store.GetSize(); ++i) {
    const KvsType item = store.GetKvsTypeNext();
    content += i == 0 ? "" : ",";
    const Kind kind = store.GetType();
    content += kind == Kind::kDouble   ? std::to_string(item.GetDouble())
               : kind == Kind::kInt    ? std::to_string(item.GetSInt64())
               : kind == Kind::kUint   ? std::to_string(item.GetUInt64()) + "u"
               : kind == Kind::kBool   ? (item.GetBool() ? "true" : "false")
               : kind == Kind::kString ? "'" + item.GetString() + "'"
                                       : ValueText(item);
  }
  content = store.GetParsedAsArray() ? "[" + content + "]" : content;
  const int status = static_cast<int>(value.GetStatus());
  return value.GetKey() + ":" + access.getKvsTypeAsString(value, value.GetType()) + "=" + content +
         (status == 0 ? "" : "!" + std::to_string(status));
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
