#include "ara/per/key_value_storage.h"

#include "ara/per/logic_error_exception.h"
#include "key-value-storage/key_value_storage_impl.h"

namespace ara::per {

KeyValueStorage::KeyValueStorage(const std::string& database)
    : pimpl_(std::make_shared<Impl>(database)) {}

KeyValueStorage::KeyValueStorage(KeyValueStorage&& other) noexcept = default;
KeyValueStorage& KeyValueStorage::operator=(KeyValueStorage&& other) noexcept = default;

KeyValueStorage::~KeyValueStorage() {
  if (pimpl_) {
    pimpl_->deinit();
  }
}

KeyValueStorage::Impl& KeyValueStorage::engine() const {
  if (!pimpl_) {
    throw LogicErrorException("KeyValueStorage: the database has been moved from");
  }
  return *pimpl_;
}

std::vector<std::string> KeyValueStorage::GetAllKeys() const { return engine().getAllKeys(); }

bool KeyValueStorage::HasKey(const std::string& key) const { return engine().hasKey(key); }

void KeyValueStorage::RemoveKey(const std::string& key) {
  if (pimpl_) {
    pimpl_->removeKey(key);
  }
}

void KeyValueStorage::RemoveAllKeys() {
  if (pimpl_) {
    pimpl_->removeAllKeys();
  }
}

void KeyValueStorage::SyncToStorage() const {
  if (pimpl_) {
    pimpl_->syncToLocalStorage();
  }
}

void KeyValueStorage::setLogLevel(int) {}  // Intended: without effect

template <class T>
KeyValueStorage::Status KeyValueStorage::GetKvsTypeStatus(const std::string&, T status) const {
  return ConvertKvsTypeStatus(status);
}

template KeyValueStorage::Status KeyValueStorage::GetKvsTypeStatus<KvsType::Status>(
    const std::string&, KvsType::Status) const;

std::unique_ptr<KeyValueStorage> CreateKeyValueStorage(const std::string& database) {
  return std::make_unique<KeyValueStorage>(database);
}

// Intended: recovering and resetting a database are without effect.
void RecoverKeyValueStorage(const std::string&) {}
void ResetKeyValueStorage(const std::string&) {}

KeyValueStorage::Status ConvertKvsTypeStatus(const KvsType::Status& status) {
  using Status = KeyValueStorage::Status;  // the numbers run parallel
  return status > KvsType::Status::kGeneralError ? Status::kGeneralError
                                                 : static_cast<Status>(status);
}

}  // namespace ara::per
