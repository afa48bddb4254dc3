#ifndef UPDATE_PER_UPDATE_IMPL_H_
#define UPDATE_PER_UPDATE_IMPL_H_

#include <string>
#include <vector>

#include "ara/per/key_value_storage.h"
#include "ara/per/kvs_type.h"
#include "ara/per/log_extend.h"
#include "ara/per/per_update.h"
#include "manifestaccess/manifest_helper.h"

namespace ara::per {

enum class EUpdateType {
  kInstallation = 0,
  kUpdate = 1,  // treated as an installation throughout
  kUninstallation = 2,
};

/// A path cut in two.
struct fileStruct {
  std::string filePath;  // the directory
  std::string fileName;
};

/// The one update engine.
class PersistencyUpdateImpl final : public PersistencyUpdate {
 public:
  PersistencyUpdateImpl();

  int updatePersistency(const std::string& path) override;

  /// @return `kUninstallation` for any text that is neither "installation" nor "update"
  EUpdateType switchUpdateType(std::string text);

  /// @return the type of that name in a manifest; `kNotSupported` for any other text
  KvsType::Type switchType(const std::string& text);

  void filePathParser(const std::string& path, fileStruct& out);

  /// The two sections. @return 1 for an uninstallation; any other result has no meaning
  int updateFileProxy(EUpdateType type);
  int updateKeyValueDb(EUpdateType type);

  /// @return the pieces of `text` between the delimiters. Intended: empty ones are left out, and
  ///     blanks stay
  std::vector<std::string> parserSplit(std::string text, char delimiter);

  /// Read an initial value, or a list of them, by the name of its type. Intended: numbers are not
  /// checked; what the stream extracts is stored.
  /// @return a default value for a type that has no extraction
  /// @throws std::exception for a list without elements
  KvsType parserData(std::string dataType, std::string value);
  KvsType parserVectorData(std::string dataType, std::string value);

 private:
  void applyFile(const FileProxy& fileProxy);
  void applyDatabase(const DatabaseInfo& database);
  void applyItems(KeyValueStorage& storage, const std::vector<keyValuePair>& items);

  ManifestHelper manifest_;
  LogExtend* log_;
};

}  // namespace ara::per

#endif  // UPDATE_PER_UPDATE_IMPL_H_
