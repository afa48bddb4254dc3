#ifndef MANIFESTACCESS_MANIFEST_HELPER_H_
#define MANIFESTACCESS_MANIFEST_HELPER_H_

#include <cstdint>
#include <string>
#include <vector>

#include "ara/per/log_extend.h"

namespace jsconfig {
class CObject;
}  // namespace jsconfig

namespace ara::per {

/// What `ManifestHelper::initInfo` is to read.
enum class ConfigKind {
  kDeploymentConfig = 0,
  kDataConfig = 1,
};

/// The configuration file, behind the working directory.
inline constexpr char kConfigFile[] = "/PersistencyConfig.json";

/// Milliseconds, when there is no configuration file.
inline constexpr std::uint32_t kUpdateTimeWithoutFile = 60000;

/// The settings of the configuration file, for everything in the process.
struct DatabaseConfig {
  bool isRedundancy = false;
  std::uint32_t maxSize = 0;     // bytes
  std::uint32_t checksum = 0;    // of the stored file; 0: none is set up
  std::uint32_t updateTime = 0;  // milliseconds; 0: no delayed synchronisation
};

// The numbers of the strategies "overWrite", "keepExisting" and "delete".
inline constexpr std::uint32_t kOverWrite = 0;
inline constexpr std::uint32_t kKeepExisting = 1;
inline constexpr std::uint32_t kDelete = 2;

struct FileProxy {
  std::uint32_t updateStrategy = kOverWrite;
  std::string uri;         // the stored file
  std::string contentUri;  // the file with the new content
};

struct keyValuePair {
  std::uint32_t updateStrategy = kOverWrite;
  std::string name;
  std::string initValue;
  std::string valueDataType;
};

struct DatabaseInfo {
  std::uint32_t updateStrategy = kOverWrite;
  std::string uri;
  std::vector<keyValuePair> keyValuePairs;
};

/// Reads the configuration file and the deployment manifest into plain records.
///
/// Intended: nothing is cleared between two reads with one object. Pairs are appended to those of
/// the first, and a section's flag stays set.
class ManifestHelper {
 public:
  ManifestHelper();

  /// Reads the file at `path` as `kind`.
  /// @return false when the file is missing, or lacks "DeploymentConfig" or "isRedundancy".
  ///     Intended: true for a file that exists and does not parse, with nothing read.
  bool initInfo(std::string path, ConfigKind kind);

  /// Sets "DataConfig" / "checksum" in the document at `path` and writes it back.
  /// @return false when the document does not parse. Intended: true when it cannot be written.
  bool saveConfigInfo(std::string path, unsigned int checksum);

  /// @return true. Intended: also when nothing was read; the record is zero then.
  bool getDatabaseConfig(DatabaseConfig& config);
  /// The sections that `initInfo` has read. @return whether there was one; if not, the argument
  /// is left alone
  bool getFileProxy(FileProxy& fileProxy);
  bool getKeyValuePair(DatabaseInfo& database);

  bool parseDbConfigInfo(jsconfig::CObject* obj);
  bool parseDbbInfo(jsconfig::CObject& obj);
  bool parseFpInfo(jsconfig::CObject& obj);

  bool isExitfp = false;  // a "FileProxy" section exists and was read
  bool isExitDb = false;  // a "KeyValukDatabase" section exists and was read
  std::string updateType;

 private:
  FileProxy m_FpInfo;
  DatabaseInfo m_DbInfo;
  DatabaseConfig m_DbConfig;
  LogExtend* m_log;
};

}  // namespace ara::per

#endif  // MANIFESTACCESS_MANIFEST_HELPER_H_
