#include <algorithm>
#include <cstddef>
#include <exception>
#include <filesystem>
#include <functional>
#include <memory>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "ara/per/file_proxy_accessor_factory.h"
#include "ara/per/key_value_storage.h"
#include "ara/per/per_update.h"
#include "tests/support/database_test.h"
#include "tests/support/delays.h"
#include "tests/support/thrown.h"

namespace ara::per::testing {

/// A manifest for the file "files/target" and the database "db".
static std::string Manifest(const std::string& type, const std::string& file,
                            const std::string& database, const std::string& pairs) {
  return R"({"DeploymentConfig":{"UpdateType":")" + type +
         R"(","KeyValukDatabase":{"uri":"db","updateStrategy":")" + database +
         R"(","keyValuePairs":[)" + pairs +
         R"(]},"FileProxy":{"contentUri":"source","uri":"files/target","updateStrategy":")" + file +
         "\"}}}";
}

/// Pairs for a manifest, of type string. @param items  a name, a digit and a strategy for each
static std::string Pairs(const std::string& items) {
  return std::regex_replace(
      items, std::regex("(.)(\\d)(\\w+)"),
      R"({"name":"$1","initValue":"$2","valueDataType":"string","updateStrategy":"$3"})");
}

/// Updates the file from "old" to "new" and adds 7 as "b" to a database with 1 as "a".
static const std::string kManifest =
    Manifest("update", "overWrite", "keepExisting", Pairs("b7overWrite"));

/// Makes a file, or none for "-".
static void Put(const char* path, const std::string& text) {
  std::filesystem::create_directory("files");
  WriteFile(path, text);
  if (text == "-") {
    std::filesystem::remove(path);
  }
}

/// Installs items, each as "name|type|value;", and a file with "new" in it.
static void Install(const std::string& items) {
  std::string pairs = std::regex_replace(
      items, std::regex("([^|]*)[|]([^|]*)[|]([^;]*);"),
      R"({"name":"$1","valueDataType":"$2","initValue":"$3","updateStrategy":"overWrite"},)");
  pairs.pop_back();
  Put("source", "new");
  WriteFile("manifest", Manifest("installation", "overWrite", "keepExisting", pairs));
  PersistencyUpdate::CreatePersistencyUpdate()->updatePersistency("manifest");
}

class UpdateTest : public DatabaseTest {
 protected:
  using Engine = std::unique_ptr<PersistencyUpdate>;

  /// Applies a manifest to the file and to a database with 1 as "a".
  /// @return the result, what the file holds ("-" for no file), names and values of the database,
  ///     and "!" for each line on standard output
  std::string Apply(const std::string& manifest, const std::string& path = "manifest",
                    const Engine& engine = PersistencyUpdate::CreatePersistencyUpdate()) {
    WriteFile("manifest", manifest);
    Put("files/target", target_);
    Put("source", source_);
    WriteFile("db", R"([{"key":"a","type":"string","value":"1"}])");
    log_.Clear();
    const std::string result = std::to_string(engine->updatePersistency(path));
    static const std::regex rest(R"re(\{"key":"|","type":"\w+","value":|[\[\]"{},])re");
    return result + (std::filesystem::exists("files/target") ? " " : " -") +
           ReadFile("files/target") + " " + std::regex_replace(ReadFile("db"), rest, "") +
           std::regex_replace(out_.Take(), std::regex("the json type is invalid\n"), "!");
  }

  /// The engine's own lines since the last call.
  std::string Steps() {
    return TakeText("update/per_update_impl.cpp", "PersistencyUpdateImpl::", "@");
  }

  std::string target_ = "old";
  std::string source_ = "new";
};

TEST_F(UpdateTest, FileAndDatabaseFollowTheirStrategies) {
  const std::string large = std::string(70000, '\xFE') + '\0' + "a";
  // Strategy, target and source before and target after; strategy, items and items after.
  const std::vector<Lines> cases = {
      {"overWrite", "longer", "hello", "hello", "keepExisting", "a5overWrite", "a5"},
      {"overWrite", "-", "hello", "hello", "keepExisting", "a5keepExisting", "a5"},
      {"overWrite", "old", "", "", "keepExisting", "a5delete", ""},
      {"overWrite", "old", "-", "", "keepExisting", "b2delete,c3other,b4overWrite", "a1c3b4"},
      {"other", "old", large, large, "keepExisting", "", "a1"},
      {"keepExisting", "longer", "hello", std::string(5, '\0'), "overWrite", "a5overWrite", "a1"},
      {"keepExisting", "-", "hello", "-", "overWrite", "a5delete", "a1"},
      {"keepExisting", "old", "-", "", "Delete", "a5delete", "a1"},
      {"delete", "old", "hello", "", "delete", "", ""},
      {"delete", "-", "-", "", "delete", "a5delete,b2keepExisting,c3overWrite", "b2c3"},
  };
  for (const std::string type : {"installation", "update", "Update", "update "}) {
    for (const Lines& c : cases) {
      SCOPED_TRACE(type + " " + c[0] + " " + c[1] + " " + c[4] + " " + c[5]);
      const bool isApplied = type == "installation" || type == "update";
      target_ = c[1];
      source_ = c[2];
      EXPECT_EQ(Apply(Manifest(type, c[0], c[4], Pairs(c[5]))),
                "0 " + (isApplied ? c[3] + " " + c[6] : c[1] + " a1"));
      EXPECT_EQ(std::filesystem::exists("source"), c[2] != "-");
      // Both are synchronised, also without a change.
      const std::string fsync = c[3] == "hello" ? "fsync dataSize is:5 " : "fsync end.";
      EXPECT_EQ(log_.Has(6, "ReadWriteAccessorImpl::" + fsync), isApplied && c[3] != "-");
      EXPECT_EQ(log_.Has(6, c[6] == "a1" ? "db_changed_:0 " : "db_changed_:1 "), isApplied);
      EXPECT_EQ(log_.Texts(kEngineFile).empty(), !isApplied);
    }
  }
}

TEST_F(UpdateTest, FileComesBeforeTheDatabaseAndAnUninstallationOpensNeither) {
  Apply(kManifest);
  EXPECT_EQ(Steps(),
            "6 @updatePersistency path:manifest |6 @getUpdateType type:update |"
            "6 @updatePersistency type:1|6 @updateFileProxy ret:1 type=1|"
            "6 @filePathParser path is files/target|6 @filePathParser path is source|"
            "6 @updateFileProxy end|6 @updateKeyValueDb type:1 |6 @switchType type is string|"
            "6 @parserData eType:11 |6 @parserData end|6 @updateKeyValueDb end|"
            "6 @updatePersistency end");
  Apply(Manifest("", "delete", "delete", ""));
  EXPECT_EQ(Steps(),
            "6 @updatePersistency path:manifest |6 @getUpdateType type: |"
            "6 @updatePersistency type:2|6 @updateFileProxy ret:1 type=2|"
            "6 @updateFileProxy Uninstallation the app, ucm delete the data directly|"
            "6 @updateKeyValueDb type:2 |"
            "6 @updateKeyValueDb Uninstallation the app, ucm delete the data directly|"
            "6 @updatePersistency end");
}

TEST_F(UpdateTest, MemberOfAnotherClassIsReadAsATextOrLeftOut) {
  // A member, as far as it takes to tell it from others, then result, file, database and "!" for
  // each line on standard output: of a missing or null member, and of another value if that
  // differs. "$" is what the value reads as.
  const std::vector<Lines> cases = {
      {"UpdateType", "0 old a1"},
      {"contentUri", "0  a1b7"},
      {R"(uri":"db)", "0 new a1"},
      {R"(updateStrategy":"keepExisting)", "0 new a1"},
      {"keyValuePairs", "0 new a1"},
      {"name", "0 new a1$7"},
      {"initValue", "0 new a1b$"},
      {"valueDataType", "0 new a1b"},
      {R"(updateStrategy":"overWrite"}])", "0 new a1b7"},
      {R"(uri":"files)", "0 old a1b7"},
      {R"(updateStrategy":"overWrite"}}})", "0 new a1b7"},
      {"DeploymentConfig", "1 old a1!", "0 old a1!!"},
      {"FileProxy", "0 old a1b7!", "0 old a1b7"},
      {"KeyValukDatabase", "0 new a1!", "0 new a1"},
  };
  for (const Lines& c : cases) {
    for (const std::string& value : Lines{"", "null", "true", "5", "-5", "1.5", "\"\"", "[]", "{}",
                                          '"' + std::string(70000, 'L') + '"'}) {
      SCOPED_TRACE(c[0] + " " + value.substr(0, 9));
      std::string manifest = kManifest;
      const std::size_t name = manifest.find('"' + c[0]) + 1;
      ASSERT_NE(name, 0U);
      // The old value goes to a member that nobody knows.
      manifest.insert(value.empty() ? name : manifest.find(':', name) + 1,
                      value.empty() ? "x" : value + R"(,"x":)");
      const std::string& expected = value.empty() || value == "null" ? c[1] : c.back();
      const std::string content = std::regex_replace(value, std::regex("null|[\\[\\]\"{}]"), "");
      EXPECT_EQ(Apply(manifest), std::regex_replace(expected, std::regex("\\$"), content));
    }
  }
}

TEST_F(UpdateTest, ManifestThatCannotBeReadTouchesNothing) {
  EXPECT_EQ(Apply("", "missing"), "1 old a1");
  EXPECT_EQ(Steps(), "6 @updatePersistency path:missing |2 @updatePersistency init invalid");
  // The last opens, but its front cannot be read.
  for (const char* const path : {"files", "/proc/self/mem"}) {
    EXPECT_EQ(Apply(kManifest, path), "0 old a1") << path;
  }
  for (std::size_t size = 0; size < kManifest.size(); size += 3) {
    EXPECT_EQ(Apply(kManifest.substr(0, size)), "0 old a1") << size;
    EXPECT_EQ(Steps(),
              "6 @updatePersistency path:manifest |6 @getUpdateType type: |"
              "6 @updatePersistency type:2|6 @updatePersistency end");
  }
}

TEST_F(UpdateTest, EngineForgetsNothingBetweenTwoManifests) {
  // A missing section comes again, the pairs come before the new ones, the strategy stays.
  const std::vector<Lines> steps = {
      {kManifest, "0 new a1b7"},
      {Manifest("installation", "overWrite", "overWrite", Pairs("c3overWrite")), "0 new a1b7c3"},
      {"text", "0 new a1b7c3"},
      {R"({"DeploymentConfig":{}})", "0 old a1!!"},
      {R"({"DeploymentConfig":{"UpdateType":"update"}})", "0 new a1b7c3!!"},
      {Manifest("update", "other", "delete", Pairs("b5delete")), "0 new c3"},
  };
  const auto engine = PersistencyUpdate::CreatePersistencyUpdate();
  for (const Lines& step : steps) {
    EXPECT_EQ(Apply(step[0], "manifest", engine), step[1]) << step[0];
  }
}

class WholeRoadsTest : public DatabaseTest {};

/// A database of items and a last one of its own; `@` begins an item and `=` goes on to its value.
static std::string Saved(const std::string& item) {
  const std::string text = std::regex_replace(item, std::regex("@"), R"({"key":"k","type":")") +
                           (item.empty() ? "" : ",");
  return "[" + std::regex_replace(text, std::regex("="), R"(","value":)") +
         R"({"key":"z","type":"sint32","value":1}])";
}

TEST_F(WholeRoadsTest, EverySaveChangesItemsUntilNoneOfTheirLossesIsLeft) {
  // Items as written by hand, and what each save makes of them.
  const std::vector<Lines> cases = {
      {R"(@sint8=-128},@sint16=-32768},@uint8=255},@uint16=65535},@uint32=4294967295},@sint32=[]})"
       R"(,@uint64=[18446744073709551615,1]},@string=["x",""]},@object=[]})"},
      {"@sint64=4294967295},@sint64=[-4294967297,1]}", "@sint64=-1},@sint64=[-4294967297,1]}"},
      {R"(@uint64=4294967296},@binary="00"},@x=5},@string="x"})", R"(@uint64=0},@string="x"})"},
      {"@float=0.1},@float=[1.5,2]}", "@float=0.100000},@float=[1.500000,2.000000]}"},
      {"@double=1e9},@bool=true},@bool=[true]}", "@double=1000000000.000000},@bool=1},@bool=[1]}"},
      {"@object=[@sint16=-1},@float=2.0}]}", "@object=[@sint64=-1},@double=2.000000}]}"},
      {"@object=[@bool=true}]}", "@object=[@bool=1}]}", "@object=[@uint64=1}]}"},
      {"@object=[@float=[2]}]}", "@object=[@double=[2.000000]}]}", "@object=[@uint64=[2]}]}"},
      {"@object=[@object=[@sint8=1}]}]}", "@object=[@object=[@uint64=1}]}]}"},
  };
  for (const Lines& saved : cases) {
    WriteFile("db", Saved(saved.front()));
    for (std::size_t i = 0; i <= saved.size(); ++i) {
      EXPECT_EQ(ReadFile("db"), Saved(saved[std::min(i, saved.size() - 1)])) << saved.front();
      KeyValueStorage database("db");
      database.SetValue<int>("z", 1);
      database.SyncToStorage();
    }
  }
}

/// Reads the items that are named as the types of a manifest, with a bar behind each.
template <class... T>
static std::string ReadBack(const std::vector<Lines>& types) {
  const KeyValueStorage database("db");
  std::ostringstream text;
  auto type = types.begin();
  const auto read = [&](auto value) {
    EXPECT_EQ(database.GetValue(type++->front(), value), KeyValueStorage::Status::kSuccess);
    text << value << '|';
  };
  (read(T{}), ...);
  return text.str();
}

TEST_F(WholeRoadsTest, InstalledValuesAreWhatAStreamExtractsAndAreReadBackAfterARestart) {
  // A type, a text and its value in the file, and further elements of a list and theirs.
  const std::vector<Lines> types = {
      {"sint8", "7", "55", " -1, ,é", "45,0,-61"},
      {"uint8", "200", "50", " ,é", "0,195"},
      {"sint16", "-7", "-7", " ,40000,-40000", "0,32767,-32768"},
      {"uint16", "7", "7", "x,65536,-1", "0,65535,65535"},
      {"sint32", "-5x", "-5", "4x, ,x,0x10,2147483648,010", "4,0,0,0,2147483647,10"},
      {"uint32", "4294967295", "4294967295", " ,-1,4294967296", "0,4294967295,4294967295"},
      {"sint64", "-3", "-3", "-9223372036854775809,--1,1e3", "-9223372036854775808,0,1"},
      {"uint64", "3", "3", "18446744073709551616, ,1.9", "18446744073709551615,0,1"},
      {"float", "0.1", "0.100000", "inf,-1e39",
       "0.000000,-340282346638528859811704183484516925440.000000"},
      {"double", "-2.5e3x", "-2500.000000", "nan,16777217", "0.000000,16777217.000000"},
      {"bool", "1", "1", "0,2,true, ", "0,1,0,0"},
      {"string", "two words", "\"two words\"", " ,x", "\" \",\"x\""},
  };
  std::string items;
  std::string expected;
  for (const Lines& c : types) {
    items += c[0] + "|" + c[0] + "|" + c[1] + ";";
    items += c[0] + "s|vector<" + c[0] + ">|" + c[1] + ",," + c[3] + ";";
    const std::string value = R"(","type":")" + c[0] + R"(","value":)";
    expected += R"(,{"key":")" + c[0] + value + c[2] + R"(},{"key":")" + c[0] + "s" + value + "[" +
                c[2] + "," + c[4] + "]}";
  }
  Install(items);
  EXPECT_EQ(ReadFile("files/target") + ReadFile("db"), "new[" + expected.substr(1) + "]");
  const std::string scalars =
      ReadBack<signed char, unsigned char, short, unsigned short, int, unsigned int, long,
               unsigned long, float, double, bool, std::string>(types);
  EXPECT_EQ(scalars, "7|2|-7|7|-5|4294967295|-3|3|0.1|-2500|1|two words|");
}

TEST_F(WholeRoadsTest, EmptyListInAManifestLeavesTheDatabaseOnDiskAsItWas) {
  WriteFile("db", Saved(""));
  const auto install = [] { Install("z|sint32|2;b|uint8>vector|,;"); };
  EXPECT_EQ(Thrown<std::exception>(install), std::exception().what());
  EXPECT_EQ(ReadFile("files/target") + ReadFile("db"), "new" + Saved(""));
  EXPECT_TRUE(log_.Has(6, "KeyValueStorage::Impl::setValue for key: z isTimer=0"));
}

class DelayedRoadsTest : public DatabaseTest {
 protected:
  /// Writes to a file ("f") and changes a database ("d") in this order, does something else, and
  /// lets the delays of both end in their order.
  /// @return the output, whether the file is synchronised then, and what the database holds on disk
  std::string Outcome(const std::string& order, const std::function<void()>& then) {
    Delays& delays = Delays::OfTheProcess();
    delays.Hold(true);
    std::filesystem::remove("db");
    WriteConfig(false, 0, 50);
    file_ = CreateFileAccessorFactory(".")->CreateRWAccess("data", BasicOperations::OpenMode::out);
    database_ = CreateKeyValueStorage("db");
    for (std::size_t i = 0; i < 2; ++i) {
      if (order[i] == 'f') {
        file_->write("x", 1);
      } else {
        database_->SetValue<int>("z", 1);
      }
      delays.Settled(i + 1);
    }
    then();
    log_.Clear();
    for (int i = 0; i < 2; ++i) {
      delays.EndOne();
      delays.Settled();
    }
    delays.Hold(false);
    const bool isSynchronised = log_.Has(6, "ReadWriteAccessorImpl::fsync end.");
    return out_.Take() + (isSynchronised ? "synchronised" : "") + ReadFile("db");
  }

  std::unique_ptr<ReadWriteAccessor> file_;
  std::unique_ptr<KeyValueStorage> database_;
};

TEST_F(DelayedRoadsTest, LastChangeTakesBothCallsAndASynchronisationOrAnEndSilencesBoth) {
  EXPECT_EQ(Outcome("df", [] {}), "synchronised");
  EXPECT_EQ(Outcome("fd", [] {}),
            "timer is called but the data is invalid\ntimer is called\n" + Saved(""));
  EXPECT_EQ(Outcome("fd", [this] { file_->fsync(); }), "");
  EXPECT_EQ(Outcome("fd", [this] { file_.reset(); }), "");
  EXPECT_EQ(Outcome("df", [this] { database_->SyncToStorage(); }), Saved(""));
}

TEST_F(DelayedRoadsTest, InstallerSilencesTheApplicationWhichOverwritesItWithItsNextSave) {
  const std::string outcome = Outcome("fd", [] { Install("b|sint32|2;"); });
  EXPECT_EQ(outcome, R"([{"key":"b","type":"sint32","value":2}])");
  database_->SetValue<int>("z", 1);
  EXPECT_TRUE(log_.Has(6, "KeyValueStorage::Impl::setValue for key: z isTimer=1"));
  database_->SyncToStorage();
  EXPECT_EQ(ReadFile("db"), Saved(""));
}

}  // namespace ara::per::testing
