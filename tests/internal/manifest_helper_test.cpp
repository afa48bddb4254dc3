#include "manifestaccess/manifest_helper.h"

#include <string>

#include <gtest/gtest.h>

#include "tests/support/log_capture.h"
#include "tests/support/stdout_capture.h"
#include "tests/support/temp_dir.h"

namespace ara::per::testing {
namespace {

const std::string kRefused = "the json type is invalid\n";

constexpr char kManifest[] = R"({"DeploymentConfig":{"UpdateType":"update",
  "KeyValukDatabase":{"uri":"/db","updateStrategy":"delete","keyValuePairs":[
    {"name":"a","initValue":"5","valueDataType":"uint8","updateStrategy":"keepExisting"},
    {"name":"b","initValue":"1,2","valueDataType":"vector<int>","updateStrategy":"delete"}]},
  "FileProxy":{"contentUri":"/new","uri":"/old","updateStrategy":"keepExisting"}}})";

/// Reads files in a directory of its own.
class ManifestHelperTest : public ::testing::Test {
 protected:
  bool Read(const std::string& text, ConfigKind kind) {
    WriteFile("file", text);
    return helper_.initInfo("file", kind);
  }

  bool ReadSections(const std::string& sections) {
    return Read(R"({"DeploymentConfig":{)" + sections + "}}", ConfigKind::kDeploymentConfig);
  }

  std::string Config() {
    DatabaseConfig config;
    EXPECT_TRUE(helper_.getDatabaseConfig(config));
    return std::to_string(static_cast<int>(config.isRedundancy)) + " " +
           std::to_string(config.maxSize) + " " + std::to_string(config.checksum) + " " +
           std::to_string(config.updateTime);
  }

  std::string File() {
    FileProxy file{9, "untouched", ""};
    const bool isThere = helper_.getFileProxy(file);
    EXPECT_EQ(isThere, helper_.isExitfp);
    return (isThere ? "" : "none ") + std::to_string(file.updateStrategy) + " " + file.uri + " " +
           file.contentUri;
  }

  std::string Database() {
    DatabaseInfo database{9, "untouched", {}};
    const bool isThere = helper_.getKeyValuePair(database);
    EXPECT_EQ(isThere, helper_.isExitDb);
    std::string text =
        (isThere ? "" : "none ") + std::to_string(database.updateStrategy) + " " + database.uri;
    for (const keyValuePair& pair : database.keyValuePairs) {
      text += " " + pair.name + "|" + pair.initValue + "|" + pair.valueDataType + "|" +
              std::to_string(pair.updateStrategy);
    }
    return text;
  }

  TempDir dir_;
  StdoutCapture stdout_;
  ManifestHelper helper_;
};

TEST_F(ManifestHelperTest, WholeManifestIsReadAndASecondReadAddsToIt) {
  LogCapture log;
  EXPECT_TRUE(Read(kManifest, ConfigKind::kDeploymentConfig));
  EXPECT_EQ(Database(), "2 /db a|5|uint8|1 b|1,2|vector<int>|2");
  EXPECT_EQ(File(), "1 /old /new");
  EXPECT_EQ(log.Joined(),
            "6 ManifestHelper::initInfo updateType is:update / "
            "6 ManifestHelper::parseDbbInfo m_DbInfo.uri/db  / "
            "6 ManifestHelper::parseDbbInfo updateStrategy:delete / "
            "6 ManifestHelper::parseDbbInfo the count of keyValuePairs Size=2  / "
            "6 ManifestHelper::parseFpInfo m_FpInfo.contentUri:/new / "
            "6 ManifestHelper::parseFpInfo m_FpInfo.uri:/old  / "
            "6 ManifestHelper::parseFpInfo updateStrategy:keepExisting  / "
            "6 ManifestHelper::initInfo ret 1  / 6 ManifestHelper::getKeyValuePair end. / "
            "6 ManifestHelper::getFileProxy isExitfp 1 ");
  EXPECT_EQ(helper_.updateType + stdout_.Take(), "update");
  ReadSections(R"("KeyValukDatabase":{"uri":"/2","keyValuePairs":[{"name":"c"}]})");
  EXPECT_EQ(Database(), "2 /2 a|5|uint8|1 b|1,2|vector<int>|2 c|||0");
  ReadSections("");
  EXPECT_EQ(Database().substr(0, 4), "2 /2");
  EXPECT_EQ(File() + helper_.updateType, "1 /old /new");
}

TEST_F(ManifestHelperTest, StrategyTextsMeanDifferentThingsInTheThreePlaces) {
  // The database's strategy is read after a "delete".
  const auto expect = [this](const std::string& text, const std::string& file,
                             const std::string& database, const std::string& pair) {
    helper_ = ManifestHelper();
    ReadSections(R"("KeyValukDatabase":{"updateStrategy":"delete"})");
    const std::string strategy = R"("updateStrategy":)" + text;
    ReadSections(R"("FileProxy":{)" + strategy + R"(},"KeyValukDatabase":{)" + strategy +
                 R"(,"keyValuePairs":[{"name":"a",)" + strategy + "}]}");
    EXPECT_EQ(File(), file + "  ") << text;
    EXPECT_EQ(Database(), database + "  a|||" + pair) << text;
  };
  expect(R"("overWrite")", "0", "2", "0");
  expect(R"("keepExisting")", "1", "1", "1");
  expect(R"("delete")", "2", "2", "2");
  expect(R"("Delete")", "0", "2", "0");
}

TEST_F(ManifestHelperTest, MissingSectionsAreAnnouncedAndNoFailure) {
  const auto expect = [this](const std::string& sections, const std::string& database,
                             const std::string& file, const std::string& output) {
    SCOPED_TRACE(sections);
    helper_ = ManifestHelper();
    EXPECT_TRUE(ReadSections(sections));
    LogCapture log;
    EXPECT_EQ(Database(), database);
    EXPECT_EQ(log.Lines().empty(), !helper_.isExitDb);
    EXPECT_EQ(File(), file);
    EXPECT_EQ(stdout_.Take(), output);
  };
  const std::string none = "none 9 untouched";
  expect(R"("UpdateType":5)", none, none + " ", kRefused + kRefused);
  expect(R"("KeyValueDatabase":{},"FileProxy":{})", none, "0  ", kRefused);
  expect(R"("KeyValukDatabase":{},"FileProxy":null)", "0 ", none + " ", kRefused);
  expect(R"("KeyValukDatabase":[],"FileProxy":5)", "0 ", "0  ", "");
}

TEST_F(ManifestHelperTest, RefusedFilesGiveFalseAndUnparsableOnesTrue) {
  const auto expect = [this](const std::string& text, ConfigKind kind, bool result,
                             const std::string& logged, const std::string& output) {
    SCOPED_TRACE(text);
    LogCapture log;
    EXPECT_EQ(Read(text, kind), result);
    EXPECT_EQ(log.Joined(), logged);
    EXPECT_EQ(stdout_.Take(), output);
    EXPECT_EQ(Config() + File(), "0 0 0 0none 9 untouched ");
  };
  constexpr auto kDeployment = ConfigKind::kDeploymentConfig;
  constexpr auto kData = ConfigKind::kDataConfig;
  const std::string unparsable = "2 ManifestHelper::initInfo file is can not be parsed.";
  const std::string refused = "6 ManifestHelper::initInfo ret 0 ";
  expect("no json", kDeployment, true, unparsable, "");
  expect("", kData, true, unparsable, "");
  expect("[]", kDeployment, false, "", kRefused);
  expect(R"({"DeploymentConfig":null})", kDeployment, false, "", kRefused);
  expect("{}", kData, false, refused, kRefused);
  expect(R"({"DataConfig":{"maxSize":7}})", kData, false, refused, kRefused);
  expect("{}", static_cast<ConfigKind>(2), true, "6 ManifestHelper::initInfo ret 1 ", "");
  LogCapture log;
  EXPECT_FALSE(helper_.initInfo("missing", kData));
  EXPECT_TRUE(helper_.initInfo(".", kData));
  EXPECT_FALSE(helper_.parseDbConfigInfo(nullptr));
  EXPECT_EQ(log.Joined(), "2 file:missing is not exit / " + unparsable +
                              " / 6 ManifestHelper::parseDbConfigInfo obj is null.");
}

TEST_F(ManifestHelperTest, ConfigurationIsReadAsItStands) {
  const auto expect = [this](const std::string& members, const std::string& config) {
    LogCapture log;
    EXPECT_TRUE(Read(R"({"DataConfig":{)" + members + "}}", ConfigKind::kDataConfig));
    EXPECT_EQ(Config(), config) << members;
    EXPECT_EQ(log.Joined(),
              "6 ManifestHelper::initInfo ret 1  / 6 ManifestHelper::getDatabaseConfig end.");
  };
  expect(R"("isRedundancy":true,"maxSize":4294967295,"checksum":7,"updateTime":100)",
         "1 4294967295 7 100");
  expect(R"("isRedundancy":false)", "0 0 0 0");
  expect(R"("isRedundancy":"true","updateTime":"5")", "0 0 0 0");
  expect(R"("isRedundancy":1,"maxSize":-1,"checksum":4294967297)", "1 4294967295 1 0");
}

TEST_F(ManifestHelperTest, SavedChecksumKeepsTheRestOfTheDocument) {
  const std::string logged =
      "6 ManifestHelper::saveConfigInfo database is"
      "\xEF\xBC\x9A"
      "file  checkSum is:-1";
  const auto expect = [&](const std::string& before, const std::string& after) {
    helper_ = ManifestHelper();
    WriteFile("file", before);
    LogCapture log;
    EXPECT_TRUE(helper_.saveConfigInfo("file", 4294967295U));
    EXPECT_EQ(log.Joined(), logged);
    EXPECT_EQ(ReadFile("file"), after);
    EXPECT_EQ(Config(), "0 0 4294967295 0");
  };
  expect(R"({ "a" : [1, 2.50, "x\u0041"], "DataConfig" : {"checksum" : "1", "b" : null}})",
         R"({"a":[1,2.5,"xA"],"DataConfig":{"checksum":4294967295,"b":null}})");
  expect(R"({"DataConfig":{"b":1}})", R"({"DataConfig":{"b":1,"checksum":4294967295}})");
  expect(R"({"b":1})", R"({"b":1})");
  helper_ = ManifestHelper();
  WriteFile("file", "plain text");
  LogCapture log;
  EXPECT_FALSE(helper_.saveConfigInfo("file", 4294967295U));
  const std::string failure =
      logged + " / 6 ManifestHelper::saveConfigInfo the file is can not be parse ";
  EXPECT_EQ(log.Joined().substr(0, failure.size()), failure);
  EXPECT_GT(log.Joined().size(), failure.size());  // the reason
  EXPECT_FALSE(helper_.saveConfigInfo("missing", 5));
  EXPECT_EQ(ReadFile("file"), "plain text");
  EXPECT_EQ(Config(), "0 0 0 0");
}

}  // namespace
}  // namespace ara::per::testing
