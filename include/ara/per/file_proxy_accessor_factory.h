#ifndef ARA_PER_FILE_PROXY_ACCESSOR_FACTORY_H_
#define ARA_PER_FILE_PROXY_ACCESSOR_FACTORY_H_

#include <memory>
#include <string>
#include <vector>

#include "ara/per/basic_operations.h"
#include "ara/per/export.h"
#include "ara/per/read_accessor.h"
#include "ara/per/read_write_accessor.h"
#include "ara/per/write_accessor.h"

namespace ara::per {

/// A file proxy: a directory whose files are keys. A key is put behind the directory and a '/' as
/// it is: it is not checked, so that one that holds a '/' reaches into another directory.
///
/// A factory has no state that changes; it may be used by several threads.
class ARA_PER_EXPORT FileProxyAccessorFactory {
 public:
  virtual ~FileProxyAccessorFactory();

  /// @return the names of the regular files, in the order of the directory; none when it cannot be
  ///     read. Intended: links are left out, and the directory stays open in the process
  virtual std::vector<std::string> GetAllKeys() const = 0;

  /// Removes the key's file. Intended: as the C function `remove`, so that an empty directory goes,
  /// too; a failure is not reported.
  virtual void DeleteKey(const std::string& key) = 0;

  /// @return whether `GetAllKeys` lists the key now
  virtual bool HasKey(const std::string& key) = 0;

  /// Open the key's file; `mode` is used as it is for each of them, the kind of access only chooses
  /// what the caller may call.
  ///
  /// Intended: with redundancy configured the file is checked at once, which leaves the position of
  /// one that is not empty at its end, so that `seek` must come before reading. When its checksum
  /// is not the configuration's, what the redundant copy holds is written behind what the file
  /// holds; a `mode` that empties files, such as `out` alone, empties the copy, too.
  /// @return an accessor, never null; one that is not `good()` when the file could not be opened
  /// @throws std::bad_alloc
  virtual std::unique_ptr<ReadWriteAccessor> CreateRWAccess(const std::string& key,
                                                            BasicOperations::OpenMode mode) = 0;
  virtual std::unique_ptr<ReadAccessor> CreateReadAccess(const std::string& key,
                                                         BasicOperations::OpenMode mode) = 0;
  virtual std::unique_ptr<WriteAccessor> CreateWriteAccess(const std::string& key,
                                                           BasicOperations::OpenMode mode) = 0;
};

/// @param path  of the directory, which is not looked at
/// @return a factory over it, never null
ARA_PER_EXPORT std::unique_ptr<FileProxyAccessorFactory> CreateFileAccessorFactory(
    std::string path);

/// Intended: does nothing. @return false
ARA_PER_EXPORT bool RecoverFileProxy(std::string path);

/// Intended: does nothing. @return false
ARA_PER_EXPORT bool ResetFileProxy(std::string path);

}  // namespace ara::per

#endif  // ARA_PER_FILE_PROXY_ACCESSOR_FACTORY_H_
