#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ara/per/per_update.h"
#include "tests/support/database_test.h"

namespace ara::per::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::EndsWith;

constexpr char kUpdateFile[] = "update/per_update_impl.cpp";
/// Updates the file "target" from "old" to "new" and adds 7 as "b" to a database with 1 as "a".
constexpr char kManifest[] =
    R"({"DeploymentConfig":{"UpdateType":"update","KeyValukDatabase":{"uri":"db",)"
    R"("updateStrategy":"keepExisting","keyValuePairs":[{"name":"b","initValue":"7",)"
    R"("valueDataType":"sint32","updateStrategy":"overWrite"}]},"FileProxy":)"
    R"({"contentUri":"source","uri":"target","updateStrategy":"overWrite"}}})";
constexpr char kUntouched[] = "old a1";

std::string Replaced(std::string text, const std::string& from, const std::string& to) {
  for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size()) {
    text.replace(at, from.size(), to);
  }
  return text;
}

Lines Words(const std::string& text) {
  std::istringstream stream(text);
  return {std::istream_iterator<std::string>(stream), {}};
}

/// What a file holds, with "0" for a zero byte; "." for an empty one, "-" for none.
std::string Get(const char* path) {
  const std::string text = Replaced(ReadFile(path), std::string(1, '\0'), "0");
  return !fs::exists(path) ? "-" : text.empty() ? "." : text;
}

void Put(const char* path, const std::string& text) {
  fs::remove(path);
  if (text != "-") {
    WriteFile(path, text == "." ? "" : Replaced(text, "0", std::string(1, '\0')));
  }
}

/// A manifest with nothing but a section for the database.
/// @param items  a name, a digit and the first letter of a strategy for each, of type sint32
std::string DatabaseManifest(const std::string& type, const std::string& strategy,
                             const std::string& items) {
  std::string pairs = std::regex_replace(
      items, std::regex("(.)(.)(.)"),
      R"(,{"name":"$1","initValue":"$2","valueDataType":"sint32","updateStrategy":"$3"})");
  for (const std::string word : {"overWrite", "keepExisting", "delete"}) {
    pairs = Replaced(pairs, ":\"" + word.substr(0, 1) + '"', ":\"" + word + '"');
  }
  return R"({"DeploymentConfig":{"UpdateType":")" + type +
         R"(","KeyValukDatabase":{"uri":"db","updateStrategy":")" + strategy +
         R"(","keyValuePairs":[)" + pairs.substr(pairs.empty() ? 0 : 1) + "]}}}";
}

class UpdateTest : public DatabaseTest {
 protected:
  UpdateTest() { Restore(); }

  static void Restore() {
    WriteFile("source", "new");
    WriteFile("target", "old");
    WriteFile("db", R"([{"key":"a","type":"sint32","value":1}])");
  }

  int Apply(const std::string& manifest, const std::string& path = "manifest") {
    WriteFile("manifest", manifest);
    log_.Clear();
    return PersistencyUpdate::CreatePersistencyUpdate()->updatePersistency(path);
  }

  /// The content of the target, and names and numbers of the database.
  static std::string Stored() {
    std::string database = ReadFile("db");
    for (const char* part : {R"({"key":")", R"(","type":"sint32","value":)",
                             R"(","type":"object","value":)", "},", "}", "[", "]"}) {
      database = Replaced(database, part, "");
    }
    return Get("target") + " " + database;
  }
};

TEST_F(UpdateTest, DatabaseFollowsItsOwnStrategyAndThenThatOfEachItem) {
  // The strategy, items, and what the database holds then; "-" stands for nothing.
  const Lines c = Words(
      "keepExisting - a1  keepExisting a5o a5  keepExisting a5k a5  keepExisting a5x a5 "
      "keepExisting a5d -  keepExisting a5db6oa7o b6a7  keepExisting b2dc3kb4oc5k a1c5b4 "
      "delete - -  delete a5d -  delete b2ka5o b2a5  overWrite - a1  overWrite a5ob6k a1 "
      "overWrite a5d a1  Delete a5o a1  other a5o a1");
  for (const std::string type : {"installation", "update", "uninstallation", "Update", ""}) {
    for (std::size_t i = 0; i < c.size(); i += 3) {
      SCOPED_TRACE(type + " " + c[i] + " " + c[i + 1]);
      Restore();
      EXPECT_EQ(Apply(DatabaseManifest(type, c[i], Replaced(c[i + 1], "-", ""))), 0);
      const bool isApplied = type == "installation" || type == "update";
      EXPECT_EQ(Stored(), isApplied ? "old " + Replaced(c[i + 2], "-", "") : kUntouched);
      const bool isChanged = c[i] == "delete" || (c[i] == "keepExisting" && c[i + 1] != "-");
      EXPECT_EQ(log_.Has(6, isChanged ? "db_changed_:1 " : "db_changed_:0 "), isApplied);
      EXPECT_EQ(TakeLines(kEngineFile).empty(), !isApplied);
    }
  }
}

TEST_F(UpdateTest, FileFollowsItsStrategy) {
  const std::string large(70000, '\xFE');
  // The strategy, target and source before, and the target after it.
  const Lines c = Words(
      "overWrite longer hello hello  overWrite - hello hello  overWrite old . .  overWrite old - . "
      "overWrite old a0b0 a0b0  other old hello hello  other old " +
      large + " " + large +
      " keepExisting longer hello 00000  keepExisting - hello -  keepExisting . hello 00000 "
      "keepExisting old . .  keepExisting old - .  delete old hello .  delete - - .");
  fs::create_directory("files");
  for (const std::string type : {"installation", "update", "uninstallation"}) {
    for (std::size_t i = 0; i < c.size(); i += 4) {
      SCOPED_TRACE(type + " " + c[i] + " " + c[i + 1] + " " + c[i + 2].substr(0, 9));
      const std::string& result = c[i + 3];
      Put("files/target", c[i + 1]);
      Put("source", c[i + 2]);
      Apply(R"({"DeploymentConfig":{"UpdateType":")" + type + R"(","FileProxy":{"contentUri":)" +
            R"("source","uri":"files/target","updateStrategy":")" + c[i] + "\"}}}");
      const bool isApplied = type != "uninstallation";
      EXPECT_TRUE(Get("files/target") == c[i + (isApplied ? 3 : 1)]);
      EXPECT_TRUE(Get("source") == c[i + 2]);
      // What was written is synchronised; without it the call is only logged.
      const std::string size = "fsync dataSize is:" + std::to_string(result.size()) + " ";
      EXPECT_EQ(log_.Has(6, "ReadWriteAccessorImpl::" + size), isApplied && result.size() > 1);
      EXPECT_EQ(log_.Has(6, "ReadWriteAccessorImpl::fsync end."), isApplied && result != "-");
    }
  }
}

TEST_F(UpdateTest, FileComesBeforeTheDatabaseAndAnUninstallationOpensNeither) {
  Apply(kManifest);
  EXPECT_EQ(Stored(), "new a1b7");
  EXPECT_EQ(TakeText(kUpdateFile, "PersistencyUpdateImpl::", "@"),
            "6 @updatePersistency path:manifest |6 @getUpdateType type:update |"
            "6 @updatePersistency type:1|6 @updateFileProxy ret:1 type=1|"
            "6 @filePathParser path is target|6 @filePathParser path is source|"
            "6 @updateFileProxy end|6 @updateKeyValueDb type:1 |6 @switchType type is sint32|"
            "6 @parserData eType:5 |6 @parserData end|6 @updateKeyValueDb end|"
            "6 @updatePersistency end");
  Restore();
  Apply(Replaced(kManifest, "\"update\"", "\"\""));
  EXPECT_EQ(Stored(), kUntouched);
  EXPECT_THAT(TakeText(kUpdateFile, "PersistencyUpdateImpl::", "@"),
              EndsWith("|6 @updatePersistency type:2|6 @updateFileProxy ret:1 type=2|"
                       "6 @updateFileProxy Uninstallation the app, ucm delete the data directly|"
                       "6 @updateKeyValueDb type:2 |"
                       "6 @updateKeyValueDb Uninstallation the app, ucm delete the data directly|"
                       "6 @updatePersistency end"));
}

TEST_F(UpdateTest, MemberOfAnotherClassIsReadAsATextOrLeftOut) {
  // A member, as far as it takes to tell it from others, then result, target, database and "!" for
  // each line on standard output: of a missing or null member, and of another value. "$" is what
  // the value reads as, "#" its number.
  const Lines c = Words(R"(UpdateType 0,old,a1 0,old,a1  contentUri 0,.,a1b7 0,.,a1b7
    uri":"target 0,old,a1b7 0,old,a1b7  updateStrategy":"overWrite"}}} 0,new,a1b7 0,new,a1b7
    uri":"db 0,new,a1 0,new,a1  updateStrategy":"keepExisting 0,new,a1 0,new,a1
    keyValuePairs 0,new,a1 0,new,a1  updateStrategy":"overWrite"}] 0,new,a1b7 0,new,a1b7
    name 0,new,a17 0,new,a1$7  initValue 0,new,a1b0 0,new,a1b#  valueDataType 0,new,a1b 0,new,a1b
    DeploymentConfig 1,old,a1! 0,old,a1!!  FileProxy 0,old,a1b7! 0,old,a1b7
    KeyValukDatabase 0,new,a1! 0,new,a1)");
  const Lines values = {"",    "null",  "true", "5",  "-5",
                        "1.5", R"("")", "[]",   "{}", '"' + std::string(70000, 'L') + '"'};
  for (std::size_t i = 0; i < c.size(); i += 3) {
    for (const std::string& value : values) {
      SCOPED_TRACE(c[i] + " " + value.substr(0, 9));
      Restore();
      std::string manifest = kManifest;
      const std::size_t name = manifest.find('"' + c[i]) + 1;
      // The old value goes to a member that nobody knows.
      manifest.insert(value.empty() ? name : manifest.find(':', name) + 1,
                      value.empty() ? "x" : value + R"(,"x":)");
      const int result = Apply(manifest);
      const bool isMissing = value.empty() || value == "null";
      const bool isText = !isMissing && value.find_first_of("[{") != 0;
      const std::string text = isText ? Replaced(value, "\"", "") : "";
      const std::string expected = Replaced(c[i + (isMissing ? 1 : 2)], "$", text);
      EXPECT_EQ(std::to_string(result) + "," + Replaced(Stored(), " ", ",") +
                    Replaced(out_.Take(), "the json type is invalid\n", "!"),
                Replaced(expected, "#", std::to_string(std::strtol(text.c_str(), nullptr, 10))));
    }
  }
}

TEST_F(UpdateTest, ManifestThatCannotBeReadTouchesNothing) {
  const std::string invalid = "2 @updatePersistency init invalid";
  const std::string unparsed =
      "2 ManifestHelper::initInfo file is can not be parsed.|6 @getUpdateType type: |"
      "6 @updatePersistency type:2|6 @updatePersistency end";
  const auto expect = [&](const char* path, const std::string& text, const std::string& lines) {
    SCOPED_TRACE(path + text);
    EXPECT_EQ(Apply(text, path), lines == unparsed ? 0 : 1);
    EXPECT_THAT(TakeText("", "PersistencyUpdateImpl::", "@"), EndsWith(" |" + lines));
    EXPECT_EQ(Stored(), kUntouched);
  };
  for (const std::string& path : {std::string(), std::string("missing"), std::string(500, 'p')}) {
    expect(path.c_str(), "", "2 file:" + path + " is not exit|" + invalid);
  }
  for (const char* text : {"[]", "{}", R"({"deploymentConfig":{"UpdateType":"update"}})"}) {
    expect("manifest", text, invalid);
  }
  fs::create_directory("directory");
  expect("directory", "", unparsed);
  expect("/proc/self/mem", "", unparsed);  // opens, but its front cannot be read
  expect("manifest", "text", unparsed);
  expect("manifest", std::string(kManifest) + "}", unparsed);
  for (std::size_t size = 0; size + 1 < sizeof kManifest; ++size) {
    expect("manifest", std::string(kManifest, size), unparsed);
  }
}

TEST_F(UpdateTest, EngineForgetsNothingBetweenTwoManifests) {
  // The file section comes again, the pairs come before the new ones, the strategy stays.
  const std::vector<Lines> steps = {
      {kManifest, "0 new a1b7"},
      {DatabaseManifest("installation", "overWrite", "c3o"), "0 new a1b7c3"},
      {"text", "0 new a1b7c3"},
      {"{}", "1 old a1"},
      {R"({"DeploymentConfig":{}})", "0 old a1"},
      {DatabaseManifest("update", "delete", "b5d"), "0 new c3"},
      {R"({"DeploymentConfig":{"UpdateType":"update"}})", "0 new c3"},
  };
  const auto engine = PersistencyUpdate::CreatePersistencyUpdate();
  for (const Lines& step : steps) {
    SCOPED_TRACE(step[0]);
    Restore();
    WriteFile("manifest", step[0]);
    const int result = engine->updatePersistency("manifest");
    EXPECT_EQ(std::to_string(result) + " " + Stored(), step[1]);
  }
}

}  // namespace
}  // namespace ara::per::testing
