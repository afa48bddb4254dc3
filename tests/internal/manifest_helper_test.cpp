#include "manifestaccess/manifest_helper.h"

#include <string>

#include <gtest/gtest.h>

#include "tests/support/database_test.h"

namespace ara::per::testing {

class ManifestHelperTest : public DatabaseTest {
 protected:
  bool Read(const std::string& text, ConfigKind kind = ConfigKind::kDeploymentConfig) {
    WriteFile("file", text);
    log_.Clear();
    return helper_.initInfo("file", kind);
  }

  /// What is known by now: configuration, file and database, the last two only if they are there.
  std::string Known() {
    DatabaseConfig config;
    FileProxy file;
    DatabaseInfo database;
    helper_.getDatabaseConfig(config);
    std::string text = std::to_string(static_cast<int>(config.isRedundancy)) + " " +
                       std::to_string(config.maxSize) + " " + std::to_string(config.checksum) +
                       " " + std::to_string(config.updateTime);
    if (helper_.getFileProxy(file)) {
      text += " F" + std::to_string(file.updateStrategy) + file.uri + file.contentUri;
    }
    if (helper_.getKeyValuePair(database)) {
      text += " D" + std::to_string(database.updateStrategy) + database.uri;
    }
    for (const keyValuePair& pair : database.keyValuePairs) {
      text += " " + pair.name + "|" + pair.initValue + "|" + pair.valueDataType + "|" +
              std::to_string(pair.updateStrategy);
    }
    return text;
  }

  ManifestHelper helper_;
};

TEST_F(ManifestHelperTest, WholeManifestIsReadAndASecondReadAddsToIt) {
  Read(R"({"DeploymentConfig":{"UpdateType":"update","KeyValukDatabase":{"uri":"/db",
    "updateStrategy":"delete","keyValuePairs":[
      {"name":"a","initValue":"5","valueDataType":"uint8","updateStrategy":"keepExisting"},
      {"name":"b","initValue":"1,2","valueDataType":"vector<int>","updateStrategy":"delete"}]},
    "FileProxy":{"contentUri":"/new","uri":"/old","updateStrategy":"keepExisting"}}})");
  EXPECT_EQ(Known(), "0 0 0 0 F1/old/new D2/db a|5|uint8|1 b|1,2|vector<int>|2");
  const std::string next = " / 6 ManifestHelper::";
  EXPECT_EQ(" / " + log_.Joined(),
            next + "initInfo updateType is:update" + next + "parseDbbInfo m_DbInfo.uri/db " + next +
                "parseDbbInfo updateStrategy:delete" + next +
                "parseDbbInfo the count of keyValuePairs Size=2 " + next +
                "parseFpInfo m_FpInfo.contentUri:/new" + next + "parseFpInfo m_FpInfo.uri:/old " +
                next + "parseFpInfo updateStrategy:keepExisting " + next + "initInfo ret 1 " +
                next + "getDatabaseConfig end." + next + "getFileProxy isExitfp 1 " + next +
                "getKeyValuePair end.");
  EXPECT_EQ(helper_.updateType + out_.Take(), "update");
  // An unknown strategy means different things, and what is missing leaves what there was.
  Read(R"({"DeploymentConfig":{"FileProxy":{"updateStrategy":"overWrite"},"KeyValukDatabase":
    {"keyValuePairs":[{"updateStrategy":"x"}],"uri":"/2","updateStrategy":"overWrite"}}})");
  Read(R"({"DeploymentConfig":{}})");
  EXPECT_EQ(Known(), "0 0 0 0 F0 D2/2 a|5|uint8|1 b|1,2|vector<int>|2 |||0");
}

TEST_F(ManifestHelperTest, FilesGiveAResultALineAndOutputAndAConfigurationAsItStands) {
  const auto expect = [this](const std::string& text, bool result, const std::string& logged,
                             const std::string& known) {
    EXPECT_EQ(Read(text, ConfigKind::kDataConfig), result) << text;
    EXPECT_EQ(log_.Joined(), "6 ManifestHelper::initInfo ret " + logged);
    const std::string output = out_.Take();
    EXPECT_EQ((output == "the json type is invalid\n" ? "!" : output) + Known(), known);
  };
  expect(R"({"DataConfig":{"maxSize":7}})", false, "0 ", "!0 0 0 0");
  expect(R"({"DataConfig":{"isRedundancy":true,"maxSize":4294967295,"checksum":7,"updateTime":9}})",
         true, "1 ", "1 4294967295 7 9");
  expect(R"({"DataConfig":{"isRedundancy":1,"maxSize":-1,"checksum":4294967297,"updateTime":"5"}})",
         true, "1 ", "1 4294967295 1 0");
  EXPECT_FALSE(Read("[]"));
  EXPECT_EQ(out_.Take() + log_.Joined(), "the json type is invalid\n");
  EXPECT_TRUE(Read("x"));
  EXPECT_EQ(log_.Joined(), "2 ManifestHelper::initInfo file is can not be parsed.");
  log_.Clear();
  EXPECT_FALSE(helper_.initInfo("missing", ConfigKind::kDataConfig));
  EXPECT_EQ(log_.Joined(), "2 file:missing is not exit");
}

TEST_F(ManifestHelperTest, SavedChecksumKeepsTheRestOfTheDocument) {
  const std::string start = "6 ManifestHelper::saveConfigInfo ";
  const std::string logged = start + "database is\uFF1A" + "file  checkSum is:-1";
  const auto expect = [&](const std::string& before, const std::string& after) {
    WriteFile("file", before);
    log_.Clear();
    EXPECT_TRUE(helper_.saveConfigInfo("file", 4294967295U));
    EXPECT_EQ(log_.Joined(), logged);
    EXPECT_EQ(ReadFile("file"), after);
    EXPECT_EQ(Known(), "0 0 4294967295 0");
  };
  expect(R"({ "a" : [1, 2.50, "x\u0041"], "DataConfig" : {"checksum" : "1", "b" : null}})",
         R"({"a":[1,2.5,"xA"],"DataConfig":{"checksum":4294967295,"b":null}})");
  expect(R"({"DataConfig":{"b":1}})", R"({"DataConfig":{"b":1,"checksum":4294967295}})");
  WriteFile("file", "x");
  log_.Clear();
  EXPECT_FALSE(helper_.saveConfigInfo("file", 4294967295U));
  const std::string failed = logged + " / " + start + "the file is can not be parse ";
  EXPECT_EQ(log_.Joined().substr(0, failed.size()), failed);
}

}  // namespace ara::per::testing
