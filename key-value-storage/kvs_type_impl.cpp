#include "key-value-storage/kvs_type_impl.h"

#include <map>

#include "ara/per/logic_error_exception.h"
#include "key-value-storage/hex_text.h"
#include "support/log_here.h"

namespace ara::per {
namespace {

using ara::log::LogLevel;
using Type = KvsType::Type;

LogExtend* const sKvsImplLog = LogExtend::getLogExtenObject("PersistencyService");

// The two maps are made on first use and never destroyed: a delayed write may run while the process
// ends.

// Intended: in spite of its name, from text to type.
const std::map<std::string, Type>& kKvsTypeToStringMap_() {
  static const auto& types = *new std::map<std::string, Type>{
      {"sint8", Type::kSInt8},   {"sint16", Type::kSInt16}, {"sint32", Type::kSInt32},
      {"sint64", Type::kSInt64}, {"uint8", Type::kUInt8},   {"uint16", Type::kUInt16},
      {"uint32", Type::kUInt32}, {"uint64", Type::kUInt64}, {"bool", Type::kBoolean},
      {"float", Type::kFloat},   {"double", Type::kDouble}, {"string", Type::kString},
      {"binary", Type::kBinary}, {"object", Type::kObject},
  };
  return types;
}

const std::map<Type, std::string>& stringFromKvsTypeMap_() {
  static const auto& names = *[] {
    auto* const reversed = new std::map<Type, std::string>;
    for (const auto& [name, type] : kKvsTypeToStringMap_()) {
      reversed->emplace(type, name);
    }
    return reversed;
  }();
  return names;
}

bool IsBetween(Type type, Type first, Type last) { return first <= type && type <= last; }

int NumberOf(Type type) { return static_cast<int>(type); }

std::string GetStatusAsString(KvsType::Status status) {
  switch (status) {
    case KvsType::Status::kSuccess:
      return "Status::kSuccess";
    case KvsType::Status::kNotFound:
      return "Status::kNotFound";
    case KvsType::Status::kCheckSumError:
      return "Status::kCheckSumError";
    case KvsType::Status::kGeneralError:
      return "Status::kGeneralError:";  // Intended: the colon
  }
  return "Unknown state, should not happen!";
}

}  // namespace

KvsType::Impl::Impl() : m_internal_type(Type::kObject) {}
KvsType::Impl::Impl(bool value) : internal_value_(value), m_internal_type(Type::kBoolean) {}
KvsType::Impl::Impl(signed char value)
    : internal_value_(long{value}), m_internal_type(Type::kSInt8) {}
KvsType::Impl::Impl(short value) : internal_value_(long{value}), m_internal_type(Type::kSInt16) {}
KvsType::Impl::Impl(int value) : internal_value_(long{value}), m_internal_type(Type::kSInt32) {}
KvsType::Impl::Impl(long value) : internal_value_(value), m_internal_type(Type::kSInt64) {}
KvsType::Impl::Impl(unsigned char value)
    : internal_value_(static_cast<unsigned long>(value)), m_internal_type(Type::kUInt8) {}
KvsType::Impl::Impl(unsigned short value)
    : internal_value_(static_cast<unsigned long>(value)), m_internal_type(Type::kUInt16) {}
KvsType::Impl::Impl(unsigned int value)
    : internal_value_(static_cast<unsigned long>(value)), m_internal_type(Type::kUInt32) {}
KvsType::Impl::Impl(unsigned long value) : internal_value_(value), m_internal_type(Type::kUInt64) {}
KvsType::Impl::Impl(float value)
    : internal_value_(static_cast<double>(value)), m_internal_type(Type::kFloat) {}
KvsType::Impl::Impl(double value) : internal_value_(value), m_internal_type(Type::kDouble) {}
KvsType::Impl::Impl(const std::string& value)
    : internal_value_(value), m_internal_type(Type::kString) {}
KvsType::Impl::Impl(const char* value) : Impl(std::string(value)) {}
KvsType::Impl::Impl(void* data, std::size_t len) : m_internal_type(Type::kBinary) {
  internal_value_.Add(HexText(static_cast<const unsigned char*>(data), data == nullptr ? 0 : len));
}

void KvsType::Impl::demand(bool fits, const char* function, int line, const char* suffix) const {
  if (!fits) {
    throw LogicErrorException(GetCastErrorMessage(__FILE__, function, line, GetKey(),
                                                  getKvsTypeAsString(m_internal_type),
                                                  GetStatusAsString(m_status)) +
                              suffix);
  }
}

bool KvsType::Impl::GetBool() const {
  demand(m_internal_type == Type::kBoolean, "GetBool", __LINE__);
  return internal_value_.GetBool();
}

std::int32_t KvsType::Impl::GetInt() const {
  demand(IsInteger(), "GetInt", __LINE__);
  return static_cast<std::int32_t>(internal_value_.GetInt());
}

std::int64_t KvsType::Impl::GetInt64() const {
  demand(IsInteger(), "GetInt64", __LINE__);
  return internal_value_.GetInt();
}

std::uint32_t KvsType::Impl::GetUInt() const {
  demand(IsUnsignedInteger(), "GetUInt", __LINE__);
  return static_cast<std::uint32_t>(internal_value_.GetUint());
}

std::uint64_t KvsType::Impl::GetUInt64() const {
  demand(IsUnsignedInteger(), "GetUInt64", __LINE__);
  return internal_value_.GetUint();
}

float KvsType::Impl::GetFloat() const {
  demand(IsBetween(m_internal_type, Type::kFloat, Type::kDouble), "GetFloat", __LINE__);
  return static_cast<float>(internal_value_.GetDouble());
}

double KvsType::Impl::GetDouble() const {
  logType();
  demand(IsBetween(m_internal_type, Type::kFloat, Type::kDouble), "GetDouble", __LINE__);
  return internal_value_.GetDouble();
}

std::string KvsType::Impl::GetString() const {
  logType();
  demand(m_internal_type == Type::kString, "GetString", __LINE__);
  logType();
  return internal_value_.GetString();
}

void KvsType::Impl::demandBinary(bool fits, const char* logged, int line,
                                 const char* suffix) const {
  if (!fits) {
    sKvsImplLog->logPrint(LogLevel::kDebug, ARA_PER_HERE, "%s", logged);
  }
  demand(fits, "GetBinary", line, suffix);
}

void KvsType::Impl::GetBinary(void* data, std::size_t len) {
  demandBinary(m_internal_type == Type::kBinary, "GetType() != Type::kBinary", __LINE__);
  demandBinary(data != nullptr, "data == nullptr", __LINE__, " target ptr is a nullptr");
  demandBinary(len != 0, "len == 0", __LINE__, " requested size is 0");
  const std::string text = internal_value_.GetString();
  sKvsImplLog->logPrint(LogLevel::kDebug, ARA_PER_HERE, "string_value_.length() is %d",
                        static_cast<int>(text.length()));
  demandBinary(text.length() % 2 == 0 && len == text.length() / 2,
               "(2 * len) != string_value_.length()", __LINE__,
               " stored length and requested length do not match");
  BytesOfHexText(text, static_cast<unsigned char*>(data));
}

void KvsType::Impl::AddArrayItem(const KvsType& kvs) {
  beginArrayItem();
  const Type itemType = kvs.GetType();  // throws for one that was moved from
  if (m_internal_type == Type::kObject) {
    internal_value_.Add(kvs);
    return;
  }
  switch (itemType) {
    case Type::kFloat:
    case Type::kDouble:
      internal_value_.Add(kvs.GetDouble());
      break;
    case Type::kSInt8:
    case Type::kSInt16:
    case Type::kSInt32:
    case Type::kSInt64:
      addPlainItem(long{kvs.GetSInt64()});
      break;
    case Type::kUInt8:
    case Type::kUInt16:
    case Type::kUInt32:
    case Type::kUInt64:
      addPlainItem(static_cast<unsigned long>(kvs.GetUInt64()));
      break;
    case Type::kString:
      internal_value_.Add(kvs.GetString());
      break;
    case Type::kBoolean:
      addPlainItem(kvs.GetBool());
      break;
    default:
      throw LogicErrorException(
          "void KvsType::Impl::AddArrayItem(const KvsType& kvs): not supported type");
  }
}

void KvsType::Impl::beginArrayItem() {
  // Intended: first, so that it stays set when the item is refused.
  internal_value_.SetParsedAsArray(true);
  sKvsImplLog->logPrint(LogLevel::kDebug, ARA_PER_HERE, "addArrayItem type=%d",
                        NumberOf(m_internal_type));
}

void KvsType::Impl::addPlainItem(long item) {
  sKvsImplLog->logPrint(LogLevel::kDebug, ARA_PER_LINE("addArrayItem type is int"));
  internal_value_.Add(item);
}

void KvsType::Impl::addPlainItem(unsigned long item) {
  sKvsImplLog->logPrint(LogLevel::kDebug, ARA_PER_LINE("addArrayItem type is uint"));
  internal_value_.Add(item);
}

void KvsType::Impl::addPlainItem(bool item) { internal_value_.Add(item); }

bool KvsType::Impl::IsInteger() const {
  return IsBetween(m_internal_type, Type::kSInt8, Type::kSInt64);
}

bool KvsType::Impl::IsUnsignedInteger() const {
  return IsBetween(m_internal_type, Type::kUInt8, Type::kUInt64);
}

std::string KvsType::Impl::getKvsTypeAsString(const Type& type) {
  const auto name = stringFromKvsTypeMap_().find(type);
  return name == stringFromKvsTypeMap_().end() ? "getKvsTypeAsString_not_found" : name->second;
}

KvsType::Type KvsType::Impl::getKvsTypeFromString(const std::string& name) {
  const auto type = kKvsTypeToStringMap_().find(name);
  return type == kKvsTypeToStringMap_().end() ? Type::kNotSupported : type->second;
}

void KvsType::Impl::logType() const {
  sKvsImplLog->logPrint(LogLevel::kDebug, ARA_PER_HERE, "type=%d", NumberOf(m_internal_type));
}

void KvsType::Impl::LogState() const {
  const auto print = [](const std::string& line) {
    sKvsImplLog->logPrint(LogLevel::kDebug, ARA_PER_HERE, "%s", line.c_str());
  };
  const std::string size = std::to_string(internal_value_.GetSize());
  print("========== KVS Object ==========");
  print("m_key:" + m_key);
  print("m_checksum:" + std::to_string(static_cast<std::int32_t>(m_checksum)));
  print("m_status:" + std::to_string(static_cast<int>(m_status)));
  print("m_internal_type:" + getKvsTypeAsString(m_internal_type));
  print("m_documentation:" + m_documentation);
  print("objects:" + size);
  print("internal_value_.GetSize():" + size);
  print("========== end of object ==========");
}

}  // namespace ara::per
