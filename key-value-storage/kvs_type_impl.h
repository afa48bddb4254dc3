#ifndef KEY_VALUE_STORAGE_KVS_TYPE_IMPL_H_
#define KEY_VALUE_STORAGE_KVS_TYPE_IMPL_H_

#include <cstddef>
#include <cstdint>
#include <string>

#include "ara/per/kvs_type.h"
#include "ara/per/kvs_type_impl_internal_type.h"

namespace ara::per {

/// What a `KvsType` hides: the declared type, which alone decides what the getters allow, beside a
/// raw store whose kind says which of its lists holds the data.
class KvsType::Impl {
 public:
  Impl();
  explicit Impl(bool value);
  explicit Impl(signed char value);
  explicit Impl(short value);
  explicit Impl(int value);
  explicit Impl(long value);
  explicit Impl(unsigned char value);
  explicit Impl(unsigned short value);
  explicit Impl(unsigned int value);
  explicit Impl(unsigned long value);
  explicit Impl(float value);
  explicit Impl(double value);
  explicit Impl(const std::string& value);
  explicit Impl(const char* value);
  Impl(void* data, std::size_t len);

  bool GetBool() const;
  std::int32_t GetInt() const;
  std::int64_t GetInt64() const;
  std::uint32_t GetUInt() const;
  std::uint64_t GetUInt64() const;
  float GetFloat() const;
  double GetDouble() const;
  std::string GetString() const;
  void GetBinary(void* data, std::size_t len);

  void AddArrayItem(const KvsType& kvs);

  std::string GetKey() const { return m_key; }
  void SetKey(const std::string& key) { m_key = key; }
  KvsType::Status GetStatus() const { return m_status; }
  void SetStatus(const KvsType::Status& status) { m_status = status; }
  KvsType::Type GetType() const { return m_internal_type; }
  bool IsInteger() const;
  bool IsUnsignedInteger() const;
  KvsType GetNextArrayItem() { return internal_value_.GetKvsTypeNext(); }
  std::size_t GetNumberOfArrayItems() { return internal_value_.GetSize(); }
  void ResetArrayItemGetter() { internal_value_.resetGetter(); }
  void LogState() const;

  static std::string getKvsTypeAsString(const KvsType::Type& type);
  static KvsType::Type getKvsTypeFromString(const std::string& name);

 private:
  friend class InternalAccess;

  /// The two steps of `AddArrayItem`, the second for an item of the value's own group.
  void beginArrayItem();
  void addPlainItem(long item);
  void addPlainItem(unsigned long item);
  void addPlainItem(bool item);

  void logType() const;
  void demand(bool fits, const char* function, int line, const char* suffix = "") const;
  void demandBinary(bool fits, const char* logged, int line, const char* suffix = "") const;

  std::string m_key;
  std::uint32_t m_checksum = 0;  // Intended: nothing computes it and no file holds it
  KvsType::Status m_status = KvsType::Status::kSuccess;
  KvsTypeInternalType internal_value_;
  KvsType::Type m_internal_type;
  std::string m_documentation;
};

}  // namespace ara::per

#endif  // KEY_VALUE_STORAGE_KVS_TYPE_IMPL_H_
