#ifndef FILEACCESS_FILE_PROXY_FACTORY_IMPL_H_
#define FILEACCESS_FILE_PROXY_FACTORY_IMPL_H_

#include <memory>
#include <string>
#include <vector>

#include "ara/per/file_proxy_accessor_factory.h"
#include "ara/per/log_extend.h"

namespace ara::per {

/// The one factory: makes `ReadWriteAccessorImpl` for all kinds of access.
class FileProxyFactoryImpl final : public FileProxyAccessorFactory {
 public:
  explicit FileProxyFactoryImpl(std::string path);

  std::vector<std::string> GetAllKeys() const override;
  void DeleteKey(const std::string& key) override;
  bool HasKey(const std::string& key) override;
  std::unique_ptr<ReadWriteAccessor> CreateRWAccess(const std::string& key,
                                                    BasicOperations::OpenMode mode) override;
  std::unique_ptr<ReadAccessor> CreateReadAccess(const std::string& key,
                                                 BasicOperations::OpenMode mode) override;
  std::unique_ptr<WriteAccessor> CreateWriteAccess(const std::string& key,
                                                   BasicOperations::OpenMode mode) override;

 private:
  std::string fileOf(const std::string& key) const;

  std::string directory_;
  LogExtend* log_;
};

}  // namespace ara::per

#endif  // FILEACCESS_FILE_PROXY_FACTORY_IMPL_H_
