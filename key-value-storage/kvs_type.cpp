#include "ara/per/kvs_type.h"

#include "ara/per/logic_error_exception.h"
#include "key-value-storage/kvs_type_impl.h"

namespace ara::per {

KvsType::KvsType() : impl_(std::make_unique<Impl>()) {}
KvsType::KvsType(bool value) : impl_(std::make_unique<Impl>(value)) {}
KvsType::KvsType(signed char value) : impl_(std::make_unique<Impl>(value)) {}
KvsType::KvsType(short value) : impl_(std::make_unique<Impl>(value)) {}
KvsType::KvsType(int value) : impl_(std::make_unique<Impl>(value)) {}
KvsType::KvsType(long value) : impl_(std::make_unique<Impl>(value)) {}
KvsType::KvsType(unsigned char value) : impl_(std::make_unique<Impl>(value)) {}
KvsType::KvsType(unsigned short value) : impl_(std::make_unique<Impl>(value)) {}
KvsType::KvsType(unsigned int value) : impl_(std::make_unique<Impl>(value)) {}
KvsType::KvsType(unsigned long value) : impl_(std::make_unique<Impl>(value)) {}
KvsType::KvsType(float value) : impl_(std::make_unique<Impl>(value)) {}
KvsType::KvsType(double value) : impl_(std::make_unique<Impl>(value)) {}
KvsType::KvsType(const std::string& value) : impl_(std::make_unique<Impl>(value)) {}
KvsType::KvsType(const char* value) : impl_(std::make_unique<Impl>(value)) {}
KvsType::KvsType(void* data, std::size_t len) : impl_(std::make_unique<Impl>(data, len)) {}

KvsType::KvsType(const KvsType& other)
    : impl_(other.impl_ ? std::make_unique<Impl>(*other.impl_) : nullptr) {}

// NOLINTNEXTLINE(cert-oop54-cpp): the members bear being assigned to themselves
KvsType& KvsType::operator=(const KvsType& other) {
  if (other.impl_ && impl_) {
    *impl_ = *other.impl_;
  } else {
    impl_ = other.impl_ ? std::make_unique<Impl>(*other.impl_) : nullptr;
  }
  return *this;
}

KvsType::KvsType(KvsType&& other) noexcept = default;
KvsType& KvsType::operator=(KvsType&& other) noexcept = default;
KvsType::~KvsType() = default;

KvsType::Impl& KvsType::impl() const {
  if (!impl_) {
    throw LogicErrorException("KvsType: the value has been moved from");
  }
  return *impl_;
}

bool KvsType::GetBool() const { return impl().GetBool(); }
std::int32_t KvsType::GetSInt() const { return impl().GetInt(); }
std::int64_t KvsType::GetSInt64() const { return impl().GetInt64(); }
std::uint32_t KvsType::GetUInt() const { return impl().GetUInt(); }
std::uint64_t KvsType::GetUInt64() const { return impl().GetUInt64(); }
float KvsType::GetFloat() const { return impl().GetFloat(); }
double KvsType::GetDouble() const { return impl().GetDouble(); }
std::string KvsType::GetString() const { return impl().GetString(); }
void KvsType::GetBinary(void* data, std::size_t len) { impl().GetBinary(data, len); }
void KvsType::AddArrayItem(const KvsType& kvs) { impl().AddArrayItem(kvs); }
std::string KvsType::GetKey() const { return impl().GetKey(); }
void KvsType::SetKey(const std::string& key) { impl().SetKey(key); }
KvsType::Status KvsType::GetStatus() const { return impl().GetStatus(); }
void KvsType::SetStatus(const Status& status) { impl().SetStatus(status); }
KvsType::Type KvsType::GetType() const { return impl().GetType(); }
bool KvsType::IsSignedInteger() const { return impl().IsInteger(); }
bool KvsType::IsUnsignedInteger() const { return impl().IsUnsignedInteger(); }
void KvsType::LogState() const { impl().LogState(); }
KvsType KvsType::GetNextArrayItem() { return impl().GetNextArrayItem(); }
std::size_t KvsType::GetNumberOfArrayItems() { return impl().GetNumberOfArrayItems(); }
void KvsType::ResetArrayItemGetter() { impl().ResetArrayItemGetter(); }

}  // namespace ara::per
