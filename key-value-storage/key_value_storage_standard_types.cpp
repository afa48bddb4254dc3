#include <exception>
#include <iostream>
#include <stdexcept>
#include <type_traits>
#include <utility>

#include "ara/per/internal_access.h"
#include "ara/per/key_value_storage.h"
#include "ara/per/logic_error_exception.h"
#include "key-value-storage/hex_text.h"
#include "key-value-storage/key_value_storage_impl.h"
#include "support/log_here.h"

namespace ara::per {
namespace {

using ara::log::LogLevel;
using Byte = unsigned char;
using Status = KeyValueStorage::Status;
using Kind = KvsTypeInternalType::Kind;

LogExtend* const sStandTypeLog = LogExtend::getLogExtenObject("PersistencyService");

/// The log texts of a type; ARA_PER_TYPE below tells them.
template <class T>
struct Texts;

/// A value as its log text takes it; 64-bit values show their low 32 bits.
template <class T>
auto Loggable(const T& value) {
  if constexpr (std::is_same_v<T, std::string>) {
    return value.c_str();
  } else if constexpr (std::is_floating_point_v<T>) {
    return static_cast<double>(value);
  } else if constexpr (std::is_unsigned_v<T> && !std::is_same_v<T, bool>) {
    return static_cast<unsigned int>(value);
  } else {
    return static_cast<int>(value);
  }
}

/// Reads an item as `T`; the getter keeps to its group and the cast to the low bits.
template <class T>
T ReadAs(const KvsType& item) {
  if constexpr (std::is_same_v<T, bool>) {
    return item.GetBool();
  } else if constexpr (std::is_same_v<T, std::string>) {
    return item.GetString();
  } else if constexpr (std::is_same_v<T, float>) {
    return item.GetFloat();
  } else if constexpr (std::is_same_v<T, double>) {
    return item.GetDouble();
  } else if constexpr (std::is_signed_v<T>) {
    return static_cast<T>(item.GetSInt64());
  } else {
    return static_cast<T>(item.GetUInt64());
  }
}

/// Intended: the element of a vector of floats is read as a double, which logs its type.
template <class T>
T ReadElementAs(const KvsType& item) {
  if constexpr (std::is_same_v<T, float>) {
    return static_cast<float>(item.GetDouble());
  } else {
    return ReadAs<T>(item);
  }
}

/// Runs a read for which a wrong type is an answer and no fault. @return whether the type was right
template <class Read>
bool TryRead(Read&& read) {
  try {
    read();
    return true;
  } catch (const LogicErrorException& error) {
    sStandTypeLog->logPrint(LogLevel::kDebug, ARA_PER_HERE, "error:%s ", error.what());
    return false;
  }
}

/// The type in which a store holds an integer or a flag.
template <class T>
using Cell = std::conditional_t<std::is_same_v<T, bool>, bool,
                                std::conditional_t<std::is_signed_v<T>, long, unsigned long>>;

template <class T>
constexpr Kind kKindOf = std::is_same_v<T, bool> ? Kind::kBool
                         : std::is_signed_v<T>   ? Kind::kInt
                                                 : Kind::kUint;

/// Reads the elements where they are stored, when that cannot be told from reading a copy one by
/// one: integers and flags, whose reads log nothing, of the right kind and in a number that the
/// cursor does not take for none.
template <class T>
bool ReadInPlace(const KvsTypeInternalType& store, std::vector<T>& elements) {
  if constexpr (std::is_integral_v<T>) {
    if (store.GetType() == kKindOf<T> && !store.scalarsCountAsNone()) {
      elements.reserve(store.GetSize());
      for (const std::uint64_t cell : store.scalars()) {
        elements.push_back(static_cast<T>(KvsTypeInternalType::fromCell<Cell<T>>(cell)));
      }
      return true;
    }
  }
  return false;
}

template <class T>
std::vector<T> ReadElements(const KvsType& item) {
  std::vector<T> elements;
  if (ReadInPlace(InternalAccess().GetInternalValue(item), elements)) {
    return elements;
  }
  KvsType array = item;
  array.ResetArrayItemGetter();
  for (std::size_t i = 0; i < array.GetNumberOfArrayItems(); ++i) {
    try {
      elements.push_back(ReadElementAs<T>(array.GetNextArrayItem()));
    } catch (const std::logic_error& error) {  // the element is left out; a wrong type goes out
      std::cout << error.what() << std::endl;
    }
  }
  return elements;
}

/// The first element, and the others as its array items.
template <class T>
KvsType ArrayOf(const std::vector<T>& elements) {
  KvsType array(static_cast<T>(elements.front()));
  for (std::size_t i = 1; i < elements.size(); ++i) {
    if constexpr (std::is_integral_v<T>) {
      InternalAccess().addPlainItem(array, Cell<T>{elements[i]});
    } else {
      array.AddArrayItem(KvsType(elements[i]));
    }
  }
  return array;
}

/// Decode an item of status `kSuccess`. @return false when it holds no such value
template <class T>
bool Decode(const KvsType& item, T& value) {
  return TryRead([&] { value = ReadAs<T>(item); });
}

template <class T>
bool Decode(const KvsType& item, std::vector<T>& value) {
  value = ReadElements<T>(item);
  return true;
}

bool Decode(const KvsType& item, std::vector<Byte>& value) {
  std::string text;
  if (!TryRead([&] { text = item.GetString(); })) {
    return false;
  }
  sStandTypeLog->logPrint(LogLevel::kDebug, ARA_PER_HERE, "GetValue string_value_ is %s",
                          text.c_str());
  if (text.length() % 2 != 0) {
    return false;
  }
  value.resize(text.length() / 2);
  BytesOfHexText(text, value.data());
  return true;
}

bool Decode(KvsType item, KvsType& value) {
  value = KvsType::DeSerializeKvsData(item.SerializeKvsData(), false);  // through the text
  return true;
}

/// Make the item that is stored for a value.
template <class T>
KvsType Encode(const T& value) {
  return KvsType(value);
}

template <class T>
KvsType Encode(const std::vector<T>& value) {
  return SaveArray(value);
}

KvsType Encode(const std::vector<std::string>& value) { return ArrayOf(value); }
KvsType Encode(const std::vector<Byte>& value) {
  return KvsType(HexText(value.data(), value.size()));
}
const KvsType& Encode(const KvsType& value) { return value; }

template <class T>
constexpr bool kIsVector = false;
template <class T>
constexpr bool kIsVector<std::vector<T>> = true;

/// Logs the end of an operation, for the types that tell it.
template <bool kIsTold>
void LogEnd(const LogPlace& line) {
  if constexpr (kIsTold) {
    sStandTypeLog->logPrint(LogLevel::kDebug, line);
  }
}

}  // namespace

template <class T>
KvsType SaveArray(const T& value) {
  if (value.empty()) {
    throw std::exception();
  }
  std::cout << "SaveArray size=" << value.size() << std::endl;
  return ArrayOf(value);
}

template <class T>
Status KeyValueStorage::GetValue(const std::string& key, T& value) const {
  const KvsType& item = engine().readValue(key);
  const KvsType::Status status = item.GetStatus();
  // Intended: a double logs its type in place of the status.
  const int number =
      std::is_same_v<T, double> ? static_cast<int>(item.GetType()) : static_cast<int>(status);
  sStandTypeLog->logPrint(LogLevel::kDebug, ARA_PER_HERE, Texts<T>::kGet, key.c_str(), number);
  // Intended: a `KvsType` is read whatever its status.
  if (status == KvsType::Status::kSuccess || std::is_same_v<T, KvsType>) {
    if (!Decode(item, value)) {
      return Status::kGeneralError;
    }
  }
  LogEnd<Texts<T>::kTellsGetEnd>(Texts<T>::kGetEnd);
  return ConvertKvsTypeStatus(status);
}

template <class T>
Status KeyValueStorage::SetValue(const std::string& key, const T& value) {
  Impl& storage = engine();
  if constexpr (kIsVector<T>) {
    sStandTypeLog->logPrint(LogLevel::kDebug, ARA_PER_HERE, Texts<T>::kSet, key.c_str());
    if (value.empty()) {
      return Status::kGeneralError;
    }
  } else if constexpr (std::is_same_v<T, KvsType>) {
    sStandTypeLog->logPrint(LogLevel::kDebug, ARA_PER_HERE, Texts<T>::kSet, key.c_str());
  } else {
    sStandTypeLog->logPrint(LogLevel::kDebug, ARA_PER_HERE, Texts<T>::kSet, key.c_str(),
                            Loggable(value));
  }
  storage.setValue(key, Encode(value));
  LogEnd<Texts<T>::kTellsSetEnd>(Texts<T>::kSetEnd);
  return Status::kSuccess;
}

// One row a type: the log texts of a write, its end, a read and its end; an empty one is not
// logged. Intended: the texts are uneven, with missing and doubled blanks, "duble" and names of
// other types; all of them stay as they are.
// NOLINTBEGIN(bugprone-macro-parentheses): types cannot stand in parentheses
#define ARA_PER_TYPE(TYPE, SET, SET_END, GET, GET_END)                              \
  namespace {                                                                       \
  template <>                                                                       \
  struct Texts<TYPE> {                                                              \
    static constexpr char kSet[] = SET;                                             \
    static constexpr bool kTellsSetEnd = sizeof SET_END > 1;                        \
    static constexpr LogPlace kSetEnd = ARA_PER_LINE(SET_END);                      \
    static constexpr char kGet[] = GET;                                             \
    static constexpr bool kTellsGetEnd = sizeof GET_END > 1;                        \
    static constexpr LogPlace kGetEnd = ARA_PER_LINE(GET_END);                      \
  };                                                                                \
  }                                                                                 \
  template Status KeyValueStorage::GetValue<TYPE>(const std::string&, TYPE&) const; \
  template Status KeyValueStorage::SetValue<TYPE>(const std::string&, const TYPE&);
// NOLINTEND(bugprone-macro-parentheses)

ARA_PER_TYPE(signed char, "Setint8_tValue for key:%s, value=%d ", "",
             "GetInt8Value for key:%s  status=%d", "")
ARA_PER_TYPE(std::vector<signed char>, "vector<int8_t> for key:%s ", "",
             "Getvector<int8_t>Value for key:%s status=%d", "GetValue vector <int8> end.")
ARA_PER_TYPE(short, "Setint16_tValue for key:%s, value=%d ", "",
             "GetInt16Value for key:%s status=%d", "")
ARA_PER_TYPE(std::vector<short>, "vector<int16_t> for key:%s ", "",
             "Getvector<int16_t>Value for key:%s status=%d", "GetValue vector <int16> end.")
ARA_PER_TYPE(int, "Setint32_tValue for key:%s, value=%d ", "", "GetInt32Value for key:%s status=%d",
             "GetValue int32 end.")
ARA_PER_TYPE(std::vector<int>, "vector<int32_t> for key:%s ", "",
             "Getvector<int32_t>Value for key:%s status=%d", "GetValue vector <int32> end.")
ARA_PER_TYPE(long, "Setint64_tValue for key:%s, value=%d ", "",
             "GetInt64Value for key:%s status=%d", "GetValue int8 end.")
ARA_PER_TYPE(std::vector<long>, "vector<int64_t> for key:%s ", "",
             "Getvector<int64_t>Value for key:%s status=%d", "GetValue vector <int64> end.")
ARA_PER_TYPE(unsigned short, "Setuint16_tValue for key:%s,value=%u ", "",
             "GetUint16Value for key:%s status=%d", "GetValue uint16 end.")
ARA_PER_TYPE(std::vector<unsigned short>, "vector<uint16_t> for key:%s ", "",
             "Getvector<uint16_t>Value for key:%s status=%d", "GetValue vector <uint16> end.")
ARA_PER_TYPE(unsigned int, "Setuint32_tValue for key:%s, value=%u ", "",
             "GetUint32Value for key:%s status=%d", "GetValue uint32 end.")
ARA_PER_TYPE(std::vector<unsigned int>, "vector<uint32_t> for key:%s ", "",
             "Getvector<uint32_t>Value for key:%s status=%d", "GetValue vector <uint32> end.")
ARA_PER_TYPE(unsigned long, "Setuint64_tValue for key:%s, value=%u ", "",
             "GetUint64Value for key:%s status=%d", "GetValue uint64 end.")
ARA_PER_TYPE(std::vector<unsigned long>, "vector<uint64_t> for key:%s ", "",
             "Getvector<uint64_t>Value for key:%s status=%d", "GetValue vector <uint64> end.")
ARA_PER_TYPE(bool, "SetboolValue for key:%s, value=%d", "", "GetBoolValue for key:%s status=%d",
             "GetValue Bool end.")
ARA_PER_TYPE(std::vector<bool>, "std::vector<bool> for key:%s ", "",
             "GetValue for key:%s status=%d", "Getvector<bool>Value vector <bool> end.")
ARA_PER_TYPE(float, "float for key:%s, value=%f ", "", "GetfloatValue for key:%s status=%d",
             "GetValue float end.")
ARA_PER_TYPE(std::vector<float>, "vector<float> for key:%s ", "",
             "Getvector<float>Value for key:%s status=%d", "GetValue vector <float> end.")
ARA_PER_TYPE(double, "duble for key:%s, value=%f ", "", "GetDoubleValue for key:%s, type=%d ",
             "GetValue double end.")
ARA_PER_TYPE(std::vector<double>, "vector<double> for key:%s ", "",
             "Getvector<double>Value for key:%s status=%d", "GetValue vector <double> end.")
ARA_PER_TYPE(std::string, "string for key:%s, value=%s ", "", "GetStringValue for key:%s status=%d",
             "GetValue String end.")
ARA_PER_TYPE(std::vector<std::string>, "Setvector<std::string>Value for key:%s ",
             "SetValue vector <string> end.", "Getvector<std::string>Value for key:%s status=%d",
             "GetValue vector <string> end.")
ARA_PER_TYPE(Byte, "Setuint8_tValue for key:%s, value=%u ", "",
             "GetUint8Value for key:%s status=%d", "GetValue uint8 end.")
ARA_PER_TYPE(std::vector<Byte>, "Setvector<byte_t>Value for key:%s ",
             "SetValue vector<byte_t> end.", "Getvector<byte_t>Value for key:%s status=%d", "")
ARA_PER_TYPE(KvsType, "KvsType for key:%s ", "", "KeyValueStorage::GetValue for key:%s status=%d",
             "")

#define ARA_PER_SAVE_ARRAY(TYPE) template KvsType SaveArray(const std::vector<TYPE>&);

ARA_PER_SAVE_ARRAY(signed char)
ARA_PER_SAVE_ARRAY(short)
ARA_PER_SAVE_ARRAY(int)
ARA_PER_SAVE_ARRAY(long)
ARA_PER_SAVE_ARRAY(unsigned short)
ARA_PER_SAVE_ARRAY(unsigned int)
ARA_PER_SAVE_ARRAY(unsigned long)
ARA_PER_SAVE_ARRAY(bool)
ARA_PER_SAVE_ARRAY(float)
ARA_PER_SAVE_ARRAY(double)

}  // namespace ara::per
