#include "ara/per/internal_access.h"

#include <utility>

#include "key-value-storage/kvs_type_impl.h"

namespace ara::per {

std::uint32_t& InternalAccess::GetChecksum(const KvsType& value) { return value.impl().m_checksum; }

void InternalAccess::SetChecksum(const KvsType& value, unsigned int checksum) {
  value.impl().m_checksum = checksum;
}

std::string& InternalAccess::GetDocumentation(const KvsType& value) {
  return value.impl().m_documentation;
}

void InternalAccess::SetDocumentation(const KvsType& value, std::string documentation) {
  value.impl().m_documentation = std::move(documentation);
}

KvsType::Type& InternalAccess::GetInternalType(const KvsType& value) {
  return value.impl().m_internal_type;
}

void InternalAccess::SetInternalType(const KvsType& value, KvsType::Type type) {
  value.impl().m_internal_type = type;
}

KvsTypeInternalType& InternalAccess::GetInternalValue(const KvsType& value) {
  return value.impl().internal_value_;
}

void InternalAccess::SetInternalValue(const KvsType& value, const KvsTypeInternalType& store) {
  value.impl().internal_value_ = store;
}

std::string& InternalAccess::GetKey(const KvsType& value) { return value.impl().m_key; }

void InternalAccess::SetKey(const KvsType& value, std::string key) {
  value.impl().m_key = std::move(key);
}

KvsType::Status& InternalAccess::GetStatus(const KvsType& value) { return value.impl().m_status; }

void InternalAccess::SetStatus(const KvsType& value, KvsType::Status status) {
  value.impl().m_status = status;
}

KvsType::Type InternalAccess::GetType(const KvsType& value) { return value.impl().GetType(); }

std::string InternalAccess::getKvsTypeAsString(const KvsType&, const KvsType::Type& type) {
  return KvsType::Impl::getKvsTypeAsString(type);
}

KvsType::Type InternalAccess::getKvsTypeFromString(const KvsType&, const std::string& name) {
  return KvsType::Impl::getKvsTypeFromString(name);
}

template <class Item>
void InternalAccess::addPlainItem(const KvsType& array, Item item) {
  array.impl().beginArrayItem();
  array.impl().addPlainItem(item);
}

template void InternalAccess::addPlainItem(const KvsType&, long);
template void InternalAccess::addPlainItem(const KvsType&, unsigned long);
template void InternalAccess::addPlainItem(const KvsType&, bool);

}  // namespace ara::per
