#include "fileaccess/file_proxy_factory_impl.h"

#include <dirent.h>

#include <algorithm>
#include <cstdio>
#include <utility>

#include "fileaccess/read_write_accessor_impl.h"
#include "support/log_here.h"

namespace ara::per {

using ara::log::LogLevel;

FileProxyFactoryImpl::FileProxyFactoryImpl(std::string path)
    : directory_(std::move(path)), log_(LogExtend::getLogExtenObject("PersistencyService")) {}

std::string FileProxyFactoryImpl::fileOf(const std::string& key) const {
  return directory_ + "/" + key;
}

std::vector<std::string> FileProxyFactoryImpl::GetAllKeys() const {
  std::vector<std::string> keys;
  DIR* const directory = ::opendir(directory_.c_str());  // Intended: it is not closed again
  if (directory == nullptr) {
    return keys;
  }
  while (const dirent* const dir_entry = ::readdir(directory)) {
    if (dir_entry->d_type == DT_REG) {
      keys.emplace_back(dir_entry->d_name);
      log_->logPrint(LogLevel::kVerbose, ARA_PER_HERE,
                     "FileProxyFactoryImpl::GetAllKeys dir_entry->d_name is %s", dir_entry->d_name);
    }
  }
  return keys;
}

void FileProxyFactoryImpl::DeleteKey(const std::string& key) {
  log_->logPrint(LogLevel::kVerbose, ARA_PER_HERE, "FileProxyFactoryImpl::DeleteKey key:%s",
                 key.c_str());
  static_cast<void>(std::remove(fileOf(key).c_str()));
}

bool FileProxyFactoryImpl::HasKey(const std::string& key) {
  log_->logPrint(LogLevel::kVerbose, ARA_PER_HERE, "FileProxyFactoryImpl::HasKey key:%s",
                 key.c_str());
  const std::vector<std::string> keys = GetAllKeys();
  return std::find(keys.begin(), keys.end(), key) != keys.end();
}

std::unique_ptr<ReadWriteAccessor> FileProxyFactoryImpl::CreateRWAccess(
    const std::string& key, BasicOperations::OpenMode mode) {
  log_->logPrint(LogLevel::kVerbose, ARA_PER_HERE, "CreateRWAccess %s/%s ", directory_.c_str(),
                 key.c_str());
  return std::make_unique<ReadWriteAccessorImpl>(fileOf(key), mode);
}

std::unique_ptr<ReadAccessor> FileProxyFactoryImpl::CreateReadAccess(
    const std::string& key, BasicOperations::OpenMode mode) {
  log_->logPrint(LogLevel::kVerbose, ARA_PER_HERE, "CreateReadAccess key:%s/%s", directory_.c_str(),
                 key.c_str());
  return std::make_unique<ReadWriteAccessorImpl>(fileOf(key), mode);
}

std::unique_ptr<WriteAccessor> FileProxyFactoryImpl::CreateWriteAccess(
    const std::string& key, BasicOperations::OpenMode mode) {
  log_->logPrint(LogLevel::kVerbose, ARA_PER_HERE, "CreateWriteAccess key:%s/%s ",
                 directory_.c_str(), key.c_str());
  return std::make_unique<ReadWriteAccessorImpl>(fileOf(key), mode);
}

std::unique_ptr<FileProxyAccessorFactory> CreateFileAccessorFactory(std::string path) {
  return std::make_unique<FileProxyFactoryImpl>(std::move(path));
}

bool RecoverFileProxy(std::string) { return false; }

bool ResetFileProxy(std::string) { return false; }

}  // namespace ara::per
