#include "manifestaccess/manifest_helper.h"

#include <unistd.h>

#include <utility>

#include "jsconfig/jsconfig.h"
#include "support/json_value_class.h"
#include "support/log_here.h"

namespace ara::per {
namespace {

using ara::log::LogLevel;
using jsconfig::CObject;

bool IsRefused(const CObject& token) { return RefusesJsonClass(token.getType()); }

std::string TextOf(const CObject& object, const char* name) {
  return object[name].toString(nullptr);
}

/// @return the number of a strategy that all places know; `fallback` for any other text
std::uint32_t StrategyOf(const std::string& text, std::uint32_t fallback) {
  if (text == "delete") {
    return kDelete;
  }
  return text == "keepExisting" ? kKeepExisting : fallback;
}

}  // namespace

ManifestHelper::ManifestHelper() : m_log(LogExtend::getLogExtenObject("PersistencyService")) {}

bool ManifestHelper::initInfo(std::string path, ConfigKind kind) {
  jsconfig::CObjectDocument document;
  if (::access(path.c_str(), F_OK) != 0) {
    m_log->logPrint(LogLevel::kError, ARA_PER_HERE, "file:%s is not exit", path.c_str());
    return false;
  }
  if (!document.parse(path)) {
    m_log->logPrint(LogLevel::kError,
                    ARA_PER_LINE("ManifestHelper::initInfo file is can not be parsed."));
    return true;  // Intended: counts as read
  }
  CObject missing;
  CObject& root = document.root() == nullptr ? missing : *document.root();
  bool ret = true;
  if (kind == ConfigKind::kDeploymentConfig) {
    CObject deployment = root["DeploymentConfig"];
    if (IsRefused(deployment)) {
      return false;
    }
    updateType = TextOf(deployment, "UpdateType");
    m_log->logPrint(LogLevel::kVerbose, ARA_PER_HERE, "ManifestHelper::initInfo updateType is:%s",
                    updateType.c_str());
    // Intended: the name is spelled so; the right spelling is not found.
    if (parseDbbInfo(deployment["KeyValukDatabase"])) {
      isExitDb = true;
    }
    if (parseFpInfo(deployment["FileProxy"])) {
      isExitfp = true;
    }
  } else if (kind == ConfigKind::kDataConfig) {
    ret = parseDbConfigInfo(&root["DataConfig"]);
  }
  m_log->logPrint(LogLevel::kVerbose, ARA_PER_HERE, "ManifestHelper::initInfo ret %d ",
                  static_cast<int>(ret));
  return ret;
}

bool ManifestHelper::parseDbConfigInfo(CObject* obj) {
  if (obj == nullptr) {
    m_log->logPrint(LogLevel::kVerbose,
                    ARA_PER_LINE("ManifestHelper::parseDbConfigInfo obj is null."));
    return false;
  }
  const CObject isRedundancy = (*obj)["isRedundancy"];
  if (IsRefused(isRedundancy)) {
    return false;
  }
  m_DbConfig.isRedundancy = isRedundancy.toBool(nullptr);
  m_DbConfig.maxSize = (*obj)["maxSize"].toUInt32(nullptr);
  m_DbConfig.checksum = (*obj)["checksum"].toUInt32(nullptr);
  m_DbConfig.updateTime = (*obj)["updateTime"].toUInt32(nullptr);
  return true;
}

bool ManifestHelper::parseFpInfo(CObject& obj) {
  if (IsRefused(obj)) {
    return false;
  }
  m_FpInfo.contentUri = TextOf(obj, "contentUri");
  m_log->logPrint(LogLevel::kVerbose, ARA_PER_HERE,
                  "ManifestHelper::parseFpInfo m_FpInfo.contentUri:%s",
                  m_FpInfo.contentUri.c_str());
  m_FpInfo.uri = TextOf(obj, "uri");
  m_log->logPrint(LogLevel::kVerbose, ARA_PER_HERE, "ManifestHelper::parseFpInfo m_FpInfo.uri:%s ",
                  m_FpInfo.uri.c_str());
  const std::string strategy = TextOf(obj, "updateStrategy");
  m_log->logPrint(LogLevel::kVerbose, ARA_PER_HERE,
                  "ManifestHelper::parseFpInfo updateStrategy:%s ", strategy.c_str());
  m_FpInfo.updateStrategy = StrategyOf(strategy, kOverWrite);  // Intended: also for unknown texts
  return true;
}

bool ManifestHelper::parseDbbInfo(CObject& obj) {
  if (IsRefused(obj)) {
    return false;
  }
  m_DbInfo.uri = TextOf(obj, "uri");
  m_log->logPrint(LogLevel::kVerbose, ARA_PER_HERE, "ManifestHelper::parseDbbInfo m_DbInfo.uri%s ",
                  m_DbInfo.uri.c_str());
  const std::string strategy = TextOf(obj, "updateStrategy");
  m_log->logPrint(LogLevel::kVerbose, ARA_PER_HERE,
                  "ManifestHelper::parseDbbInfo updateStrategy:%s", strategy.c_str());
  // Intended: "overWrite" is not known here and leaves what an earlier read has set.
  m_DbInfo.updateStrategy = StrategyOf(strategy, m_DbInfo.updateStrategy);
  const jsconfig::CObjectArray pairs = obj["keyValuePairs"].toArray(nullptr);
  const int count = pairs.countObject();
  m_log->logPrint(LogLevel::kVerbose, ARA_PER_HERE,
                  "ManifestHelper::parseDbbInfo the count of keyValuePairs Size=%d ", count);
  m_DbInfo.keyValuePairs.reserve(m_DbInfo.keyValuePairs.size() + static_cast<std::size_t>(count));
  for (int i = 0; i < count; ++i) {
    const CObject& pair = pairs[i];
    keyValuePair record;
    record.name = TextOf(pair, "name");
    record.initValue = TextOf(pair, "initValue");
    record.valueDataType = TextOf(pair, "valueDataType");
    // "overWrite" is 0; so is a new record's strategy, which an unknown text leaves.
    record.updateStrategy = StrategyOf(TextOf(pair, "updateStrategy"), record.updateStrategy);
    m_DbInfo.keyValuePairs.push_back(std::move(record));
  }
  return true;
}

bool ManifestHelper::saveConfigInfo(std::string path, unsigned int checksum) {
  // The colon is the full-width character U+FF1A.
  m_log->logPrint(LogLevel::kVerbose, ARA_PER_HERE,
                  "ManifestHelper::saveConfigInfo database is\uFF1A%s  checkSum is:%d",
                  path.c_str(), static_cast<int>(checksum));
  jsconfig::CObjectDocument document;
  if (!document.parse(path)) {
    m_log->logPrint(LogLevel::kVerbose, ARA_PER_HERE,
                    "ManifestHelper::saveConfigInfo the file is can not be parse %s",
                    document.errorString().c_str());
    return false;
  }
  if (document.root() == nullptr) {
    return true;
  }
  CObject config = (*document.root())["DataConfig"];
  CObject stored = config["checksum"];
  stored.setValue(checksum);
  document.save(path);  // Intended: a failure is not reported
  m_DbConfig.checksum = checksum;
  return true;
}

bool ManifestHelper::getDatabaseConfig(DatabaseConfig& config) {
  config = m_DbConfig;
  m_log->logPrint(LogLevel::kVerbose, ARA_PER_LINE("ManifestHelper::getDatabaseConfig end."));
  return true;
}

bool ManifestHelper::getFileProxy(FileProxy& fileProxy) {
  m_log->logPrint(LogLevel::kVerbose, ARA_PER_HERE, "ManifestHelper::getFileProxy isExitfp %d ",
                  static_cast<int>(isExitfp));
  if (isExitfp) {
    fileProxy = m_FpInfo;
  }
  return isExitfp;
}

bool ManifestHelper::getKeyValuePair(DatabaseInfo& database) {
  if (isExitDb) {
    database = m_DbInfo;
    m_log->logPrint(LogLevel::kVerbose, ARA_PER_LINE("ManifestHelper::getKeyValuePair end."));
  }
  return isExitDb;
}

}  // namespace ara::per
