#include "manifestaccess/manifest_helper.h"

#include <sstream>

#include <gmock/gmock.h>

#include "tests/support/database_test.h"

namespace ara::per::testing {

class ManifestHelperTest : public DatabaseTest {
 protected:
  /// Reads a file. @return the result, the standard output and the log
  std::string Read(const std::string& text, ConfigKind kind = ConfigKind::kDeploymentConfig) {
    WriteFile("file", text);
    log_.Clear();
    const std::string result = helper_.initInfo("file", kind) ? "true " : "false ";
    return result + out_.Take() + TakeLog();
  }

  std::string TakeLog() { return TakeText("", "ManifestHelper::", "@"); }

  /// What is known by now, each part behind whether there is one: configuration, file, database.
  std::string Known() {
    DatabaseConfig config;
    FileProxy file;
    DatabaseInfo database;
    std::ostringstream text;
    text << helper_.getDatabaseConfig(config) << config.isRedundancy << " " << config.maxSize << " "
         << config.checksum << " " << config.updateTime << "|" << helper_.getFileProxy(file)
         << file.updateStrategy << file.uri << file.contentUri << "|"
         << helper_.getKeyValuePair(database) << database.updateStrategy << database.uri;
    for (const auto& [strategy, name, value, type] : database.keyValuePairs) {
      text << "|" << name << " " << value << " " << type << " " << strategy;
    }
    return text.str();
  }

  ManifestHelper helper_;
};

TEST_F(ManifestHelperTest, WholeManifestIsReadAndASecondReadAddsToIt) {
  EXPECT_EQ(Read(R"({"DeploymentConfig":{"UpdateType":"update","KeyValukDatabase":{"uri":"/db",
    "updateStrategy":"delete","keyValuePairs":[
      {"name":"a","initValue":"5","valueDataType":"uint8","updateStrategy":"keepExisting"},
      {"name":"b","initValue":"1,2","valueDataType":"vector<int>","updateStrategy":"delete"}]},
    "FileProxy":{"contentUri":"/new","uri":"/old","updateStrategy":"keepExisting"}}})"),
            "true 6 @initInfo updateType is:update|6 @parseDbbInfo m_DbInfo.uri/db "
            "|6 @parseDbbInfo updateStrategy:delete"
            "|6 @parseDbbInfo the count of keyValuePairs Size=2 "
            "|6 @parseFpInfo m_FpInfo.contentUri:/new|6 @parseFpInfo m_FpInfo.uri:/old "
            "|6 @parseFpInfo updateStrategy:keepExisting |6 @initInfo ret 1 ");
  EXPECT_EQ(Known(), "10 0 0 0|11/old/new|12/db|a 5 uint8 1|b 1,2 vector<int> 2");
  EXPECT_EQ(TakeLog(),
            "6 @getDatabaseConfig end.|6 @getFileProxy isExitfp 1 |6 @getKeyValuePair end.");
  // An unknown strategy means different things, and what is missing leaves what there was.
  Read(R"({"DeploymentConfig":{"FileProxy":{"updateStrategy":"overWrite"},"KeyValukDatabase":
    {"keyValuePairs":[{"updateStrategy":"x"}],"uri":"/2","updateStrategy":"overWrite"}}})");
  EXPECT_EQ(Read(R"({"DeploymentConfig":[]})"),
            "true the json type is invalid\nthe json type is invalid\n"
            "6 @initInfo updateType is:|6 @initInfo ret 1 ");
  EXPECT_EQ(Known(), "10 0 0 0|10|12/2|a 5 uint8 1|b 1,2 vector<int> 2|   0");
}

TEST_F(ManifestHelperTest, FilesGiveAResultALineAndOutputAndAConfigurationAsItStands) {
  const std::string refused = "false the json type is invalid\n";
  constexpr auto kData = ConfigKind::kDataConfig;
  EXPECT_FALSE(helper_.initInfo("missing", kData));
  EXPECT_EQ(TakeLog(), "2 file:missing is not exit");
  EXPECT_EQ(Read("[]"), refused);
  EXPECT_EQ(Read("x"), "true 2 @initInfo file is can not be parsed.");
  EXPECT_EQ(Read(R"({"DataConfig":{"maxSize":7}})", kData), refused + "6 @initInfo ret 0 ");
  EXPECT_EQ(Known(), "10 0 0 0|00|00");
  EXPECT_EQ(Read(R"({"DataConfig":{"isRedundancy":true,"maxSize":-1,"checksum":7,"updateTime":9}})",
                 kData),
            "true 6 @initInfo ret 1 ");
  EXPECT_EQ(Known(), "11 4294967295 7 9|00|00");
}

TEST_F(ManifestHelperTest, SavedChecksumKeepsTheRestOfTheDocument) {
  WriteFile("file", "x");
  EXPECT_FALSE(helper_.saveConfigInfo("file", 4294967295U));
  EXPECT_THAT(TakeLog(), ::testing::StartsWith("6 @saveConfigInfo database is：file  checkSum is:-1"
                                               "|6 @saveConfigInfo the file is can not be parse "));
  WriteFile("file", R"({ "a" : [1, 2.50, "x\u0041"], "DataConfig" : {"checksum" : "1"}, "b" : 2})");
  EXPECT_TRUE(helper_.saveConfigInfo("file", 4294967295U));
  EXPECT_EQ(ReadFile("file"), R"({"a":[1,2.5,"xA"],"DataConfig":{"checksum":4294967295},"b":2})");
  EXPECT_EQ(Known(), "10 0 4294967295 0|00|00");
}

}  // namespace ara::per::testing
