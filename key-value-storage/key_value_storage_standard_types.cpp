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

// One row a type: element of the family, texts of the scalar's write, read and end of read, texts
// of the vector's write, read and end of read. Intended: the texts are uneven, with missing and
// doubled blanks, "duble" and names of other types; all of them stay as they are.
#define ARA_PER_FOR_EACH_TYPE(ROW)                                                               \
  ROW(signed char, "Setint8_tValue for key:%s, value=%d ", "GetInt8Value for key:%s  status=%d", \
      "", "vector<int8_t> for key:%s ", "Getvector<int8_t>Value for key:%s status=%d",           \
      "GetValue vector <int8> end.")                                                             \
  ROW(short, "Setint16_tValue for key:%s, value=%d ", "GetInt16Value for key:%s status=%d", "",  \
      "vector<int16_t> for key:%s ", "Getvector<int16_t>Value for key:%s status=%d",             \
      "GetValue vector <int16> end.")                                                            \
  ROW(int, "Setint32_tValue for key:%s, value=%d ", "GetInt32Value for key:%s status=%d",        \
      "GetValue int32 end.", "vector<int32_t> for key:%s ",                                      \
      "Getvector<int32_t>Value for key:%s status=%d", "GetValue vector <int32> end.")            \
  ROW(long, "Setint64_tValue for key:%s, value=%d ", "GetInt64Value for key:%s status=%d",       \
      "GetValue int8 end.", "vector<int64_t> for key:%s ",                                       \
      "Getvector<int64_t>Value for key:%s status=%d", "GetValue vector <int64> end.")            \
  ROW(unsigned short, "Setuint16_tValue for key:%s,value=%u ",                                   \
      "GetUint16Value for key:%s status=%d", "GetValue uint16 end.",                             \
      "vector<uint16_t> for key:%s ", "Getvector<uint16_t>Value for key:%s status=%d",           \
      "GetValue vector <uint16> end.")                                                           \
  ROW(unsigned int, "Setuint32_tValue for key:%s, value=%u ",                                    \
      "GetUint32Value for key:%s status=%d", "GetValue uint32 end.",                             \
      "vector<uint32_t> for key:%s ", "Getvector<uint32_t>Value for key:%s status=%d",           \
      "GetValue vector <uint32> end.")                                                           \
  ROW(unsigned long, "Setuint64_tValue for key:%s, value=%u ",                                   \
      "GetUint64Value for key:%s status=%d", "GetValue uint64 end.",                             \
      "vector<uint64_t> for key:%s ", "Getvector<uint64_t>Value for key:%s status=%d",           \
      "GetValue vector <uint64> end.")                                                           \
  ROW(bool, "SetboolValue for key:%s, value=%d", "GetBoolValue for key:%s status=%d",            \
      "GetValue Bool end.", "std::vector<bool> for key:%s ", "GetValue for key:%s status=%d",    \
      "Getvector<bool>Value vector <bool> end.")                                                 \
  ROW(float, "float for key:%s, value=%f ", "GetfloatValue for key:%s status=%d",                \
      "GetValue float end.", "vector<float> for key:%s ",                                        \
      "Getvector<float>Value for key:%s status=%d", "GetValue vector <float> end.")              \
  ROW(double, "duble for key:%s, value=%f ", "GetDoubleValue for key:%s, type=%d ",              \
      "GetValue double end.", "vector<double> for key:%s ",                                      \
      "Getvector<double>Value for key:%s status=%d", "GetValue vector <double> end.")            \
  ROW(std::string, "string for key:%s, value=%s ", "GetStringValue for key:%s status=%d",        \
      "GetValue String end.", "Setvector<std::string>Value for key:%s ",                         \
      "Getvector<std::string>Value for key:%s status=%d", "GetValue vector <string> end.")

namespace ara::per {
namespace {

using ara::log::LogLevel;
using Byte = unsigned char;
using Status = KeyValueStorage::Status;
using Kind = KvsTypeInternalType::Kind;

LogExtend* const sStandTypeLog = LogExtend::getLogExtenObject("PersistencyService");

template <class T>
struct Texts;

// NOLINTBEGIN(bugprone-macro-parentheses): types cannot stand in parentheses
#define ARA_PER_TEXTS(TYPE, SET, GET, GET_END, SET_VECTOR, GET_VECTOR, GET_VECTOR_END) \
  template <>                                                                          \
  struct Texts<TYPE> {                                                                 \
    static constexpr char kSet[] = SET;                                                \
    static constexpr char kGet[] = GET;                                                \
    static constexpr char kGetEnd[] = GET_END;                                         \
  };                                                                                   \
  template <>                                                                          \
  struct Texts<std::vector<TYPE>> {                                                    \
    static constexpr char kSet[] = SET_VECTOR;                                         \
    static constexpr char kGet[] = GET_VECTOR;                                         \
    static constexpr char kGetEnd[] = GET_VECTOR_END;                                  \
  };

// NOLINTEND(bugprone-macro-parentheses)
ARA_PER_FOR_EACH_TYPE(ARA_PER_TEXTS)

template <>
struct Texts<Byte> {  // its vector is a text of hexadecimal digits and no array
  static constexpr char kSet[] = "Setuint8_tValue for key:%s, value=%u ";
  static constexpr char kGet[] = "GetUint8Value for key:%s status=%d";
  static constexpr char kGetEnd[] = "GetValue uint8 end.";
};

int NumberOf(KvsType::Status status) { return static_cast<int>(status); }

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
    if (store.GetType() == kKindOf<T> && store.GetSize() % 256 != 0) {
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

// The reads and writes by the type of the value; `Engine` is the private `KeyValueStorage::Impl`.

template <class Engine, class T>
Status Read(const Engine& engine, const std::string& key, T& value) {
  const KvsType& item = engine.readValue(key);
  const KvsType::Status status = item.GetStatus();
  int logged = NumberOf(status);
  if constexpr (std::is_same_v<T, double>) {
    logged = static_cast<int>(item.GetType());  // Intended: the type in place of the status
  }
  sStandTypeLog->logPrint(LogLevel::kDebug, ARA_PER_HERE, Texts<T>::kGet, key.c_str(), logged);
  if (status == KvsType::Status::kSuccess && !TryRead([&] { value = ReadAs<T>(item); })) {
    return Status::kGeneralError;
  }
  if constexpr (sizeof Texts<T>::kGetEnd > 1) {
    sStandTypeLog->logPrint(LogLevel::kDebug, ARA_PER_HERE, Texts<T>::kGetEnd);
  }
  return ConvertKvsTypeStatus(status);
}

template <class Engine, class T>
Status Read(const Engine& engine, const std::string& key, std::vector<T>& value) {
  const KvsType& item = engine.readValue(key);
  const KvsType::Status status = item.GetStatus();
  sStandTypeLog->logPrint(LogLevel::kDebug, ARA_PER_HERE, Texts<std::vector<T>>::kGet, key.c_str(),
                          NumberOf(status));
  if (status == KvsType::Status::kSuccess) {
    value = ReadElements<T>(item);
  }
  sStandTypeLog->logPrint(LogLevel::kDebug, ARA_PER_HERE, Texts<std::vector<T>>::kGetEnd);
  return ConvertKvsTypeStatus(status);
}

template <class Engine>
Status Read(const Engine& engine, const std::string& key, std::vector<Byte>& value) {
  const KvsType& item = engine.readValue(key);
  const KvsType::Status status = item.GetStatus();
  sStandTypeLog->logPrint(LogLevel::kDebug, ARA_PER_HERE,
                          "Getvector<byte_t>Value for key:%s status=%d", key.c_str(),
                          NumberOf(status));
  if (status == KvsType::Status::kSuccess) {
    std::string text;
    if (!TryRead([&] { text = item.GetString(); })) {
      return Status::kGeneralError;
    }
    sStandTypeLog->logPrint(LogLevel::kDebug, ARA_PER_HERE, "GetValue string_value_ is %s",
                            text.c_str());
    if (text.length() % 2 != 0) {
      return Status::kGeneralError;
    }
    value.resize(text.length() / 2);
    BytesOfHexText(text, value.data());
  }
  return ConvertKvsTypeStatus(status);
}

template <class Engine>
Status Read(const Engine& engine, const std::string& key, KvsType& value) {
  KvsType item = engine.getValue(key);
  const KvsType::Status status = item.GetStatus();
  sStandTypeLog->logPrint(LogLevel::kDebug, ARA_PER_HERE,
                          "KeyValueStorage::GetValue for key:%s status=%d", key.c_str(),
                          NumberOf(status));
  // Intended: through the text, with its losses, and whatever the status.
  value = KvsType::DeSerializeKvsData(item.SerializeKvsData(), false);
  return ConvertKvsTypeStatus(status);
}

template <class Engine, class T>
Status Write(Engine& engine, const std::string& key, const T& value) {
  sStandTypeLog->logPrint(LogLevel::kDebug, ARA_PER_HERE, Texts<T>::kSet, key.c_str(),
                          Loggable(value));
  engine.setValue(key, KvsType(value));
  return Status::kSuccess;
}

template <class Engine, class T>
Status Write(Engine& engine, const std::string& key, const std::vector<T>& value) {
  sStandTypeLog->logPrint(LogLevel::kDebug, ARA_PER_HERE, Texts<std::vector<T>>::kSet, key.c_str());
  if (value.empty()) {
    return Status::kGeneralError;
  }
  if constexpr (std::is_same_v<T, std::string>) {
    engine.setValue(key, ArrayOf(value));
    sStandTypeLog->logPrint(LogLevel::kDebug, ARA_PER_HERE, "SetValue vector <string> end.");
  } else {
    engine.setValue(key, SaveArray(value));
  }
  return Status::kSuccess;
}

template <class Engine>
Status Write(Engine& engine, const std::string& key, const std::vector<Byte>& value) {
  sStandTypeLog->logPrint(LogLevel::kDebug, ARA_PER_HERE, "Setvector<byte_t>Value for key:%s ",
                          key.c_str());
  if (value.empty()) {
    return Status::kGeneralError;
  }
  engine.setValue(key, KvsType(HexText(value.data(), value.size())));
  sStandTypeLog->logPrint(LogLevel::kDebug, ARA_PER_HERE, "SetValue vector<byte_t> end.");
  return Status::kSuccess;
}

template <class Engine>
Status Write(Engine& engine, const std::string& key, const KvsType& value) {
  sStandTypeLog->logPrint(LogLevel::kDebug, ARA_PER_HERE, "KvsType for key:%s ", key.c_str());
  engine.setValue(key, value);
  return Status::kSuccess;
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
  return Read(engine(), key, value);
}

template <class T>
Status KeyValueStorage::SetValue(const std::string& key, const T& value) {
  return Write(engine(), key, value);
}

// NOLINTBEGIN(bugprone-macro-parentheses): types cannot stand in parentheses
#define ARA_PER_ACCESS(TYPE)                                                        \
  template Status KeyValueStorage::GetValue<TYPE>(const std::string&, TYPE&) const; \
  template Status KeyValueStorage::SetValue<TYPE>(const std::string&, const TYPE&);

#define ARA_PER_SCALAR_AND_VECTOR(TYPE, ...) \
  ARA_PER_ACCESS(TYPE)                       \
  ARA_PER_ACCESS(std::vector<TYPE>)

// NOLINTEND(bugprone-macro-parentheses)
ARA_PER_FOR_EACH_TYPE(ARA_PER_SCALAR_AND_VECTOR)
ARA_PER_ACCESS(Byte)
ARA_PER_ACCESS(std::vector<Byte>)
ARA_PER_ACCESS(KvsType)

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
