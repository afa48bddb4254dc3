// A manifest is read without harm, and rewriting the checksum changes nothing but the checksum.

#include "ara/log/sink.h"
#include "fuzz/fuzz_support.h"
#include "manifestaccess/manifest_helper.h"

namespace {

using ara::per::ConfigKind;
using ara::per::DatabaseConfig;
using ara::per::ManifestHelper;

constexpr char kPath[] = "manifest.json";

// False when the settings are refused.
bool ReadSettings(DatabaseConfig& settings) {
  ManifestHelper manifest;
  return manifest.initInfo(kPath, ConfigKind::kDataConfig) && manifest.getDatabaseConfig(settings);
}

void ReadDeployment() {
  ManifestHelper manifest;
  static_cast<void>(manifest.initInfo(kPath, ConfigKind::kDeploymentConfig));
  ara::per::FileProxy file;
  ara::per::DatabaseInfo database;
  fuzz::Demand(manifest.getFileProxy(file) == manifest.isExitfp, "a file section is told of");
  fuzz::Demand(manifest.getKeyValuePair(database) == manifest.isExitDb,
               "a database section is told of");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  constexpr unsigned int kChecksum = 4294967295U;
  ara::log::SetThreshold(ara::log::LogLevel::kOff);
  fuzz::WriteFile(kPath, fuzz::TextOf(data, size));
  ReadDeployment();

  DatabaseConfig before;
  const bool wasValid = ReadSettings(before);
  if (!ManifestHelper().saveConfigInfo(kPath, kChecksum)) {
    fuzz::Demand(fuzz::ReadFile(kPath) == fuzz::TextOf(data, size),
                 "what is refused is left alone");
    return 0;
  }
  const std::string saved = fuzz::ReadFile(kPath);

  DatabaseConfig after;
  fuzz::Demand(ReadSettings(after) == wasValid, "the settings stay valid or invalid");
  if (wasValid) {
    fuzz::Demand(after.checksum == kChecksum, "the checksum was set");
    fuzz::Demand(after.isRedundancy == before.isRedundancy && after.maxSize == before.maxSize &&
                     after.updateTime == before.updateTime,
                 "the other settings stay");
  }
  fuzz::Demand(ManifestHelper().saveConfigInfo(kPath, kChecksum), "it can be saved again");
  fuzz::Demand(fuzz::ReadFile(kPath) == saved, "saving the same again changes nothing");
  return 0;
}
