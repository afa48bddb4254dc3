#include <filesystem>
#include <future>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

#include "ara/log/sink.h"
#include "ara/per/key_value_storage.h"
#include "tests/support/delays.h"

// For all tests of this program.
extern "C" __attribute__((visibility("default"))) int nanosleep(const timespec* time,
                                                                timespec* rest) {
  return ara::per::testing::Delays::OfTheProcess().Sleep(*time, rest);
}

namespace ara::per::testing {
namespace {

using ::testing::ElementsAre;

constexpr char kCalled[] = "timer is called\n";

class DelayedWriteTest : public DatabaseTest {
 protected:
  DelayedWriteTest() {
    WriteConfig(false, 0, 50);
    delays_.Hold(true);
  }

  ~DelayedWriteTest() override { delays_.Hold(false); }

  /// Makes a change that arms if the database believes that no delay lasts.
  /// @return whether it believes that one lasts
  bool Change(KeyValueStorage& database) {
    log_.Clear();
    database.SetValue<int>("a", 1);
    return log_.Has(6, "KeyValueStorage::Impl::setValue for key: a isTimer=1");
  }

  /// Arms `database`, lets something happen and ends the delay. @return what was printed by then
  template <class Event>
  std::string TakeCallAfter(KeyValueStorage& database, Event&& event) {
    delays_.Hold(true);
    EXPECT_FALSE(Change(database));
    delays_.Settled(1);
    event();
    delays_.EndOne();
    delays_.Settled();
    return out_.Take();
  }

  Delays& delays_ = Delays::OfTheProcess();
};

TEST_F(DelayedWriteTest, DelayComesFromTheConfigurationOfTheWorkingDirectory) {
  const std::string complete = R"({"DataConfig":{"isRedundancy":false,"updateTime":1500}})";
  const std::string tooLong(200 - dir_.Path().string().size() - 1, 'd');
  const std::vector<std::tuple<std::string, std::string, std::vector<long>>> cases = {
      {".", R"({"DataConfig":{"updateTime":7}})", {6000}},
      {".", "{", {}},
      {".", complete, {1500}},
      {"none", "", {60000}},
      {tooLong.substr(1), complete, {1500}},
      {tooLong, complete, {60000}},
  };
  for (const auto& [directory, config, delays] : cases) {
    SCOPED_TRACE(directory + config);
    std::filesystem::create_directory(dir_.Path() / directory);
    std::filesystem::current_path(dir_.Path() / directory);
    if (directory != "none") WriteFile("PersistencyConfig.json", config);
    delays_.Hold(true);
    KeyValueStorage database("db");
    WriteConfig(false, 0, 9999);  // read when a database is opened, and never again
    EXPECT_FALSE(Change(database));
    EXPECT_EQ(delays_.Settled(delays.size()), delays);
    EXPECT_EQ(Change(database), !delays.empty());
    EXPECT_FALSE(std::filesystem::exists("db"));
  }
}

TEST_F(DelayedWriteTest, BurstIsWrittenOnceWhenItsDelayEnds) {
  KeyValueStorage database("db");
  const auto burst = [&] {
    database.SetValue<int>("b", 2);
    database.RemoveKey("b");
    EXPECT_TRUE(Change(database));
    EXPECT_THAT(delays_.Settled(), ElementsAre(50));
    EXPECT_FALSE(std::filesystem::exists("db"));
    log_.Clear();
  };
  EXPECT_EQ(TakeCallAfter(database, burst), kCalled);
  EXPECT_THAT(log_.Texts(kEngineFile),
              ElementsAre("6 db_changed_:1 ", "6 syncToLocalStorage db_changed_ database_:db ",
                          "6 KeyValueStorage::Impl::syncToLocalStorage end"));
  EXPECT_EQ(ReadFile("db"), R"([{"key":"a","type":"sint32","value":1}])");
}

TEST_F(DelayedWriteTest, CallThatFindsNoChangeLeavesTheDatabaseDisarmedForLong) {
  KeyValueStorage database("db");
  database.RemoveAllKeys();
  delays_.Settled(1);
  database.RemoveKey("b");
  delays_.Hold(true);
  EXPECT_EQ(out_.Take(), kCalled);
  EXPECT_FALSE(std::filesystem::exists("db"));
  database.SyncToStorage();  // nothing changed: leaves the flag, too
  EXPECT_TRUE(Change(database));
  EXPECT_THAT(delays_.Settled(), ElementsAre());
  database.SyncToStorage();
  database.RemoveKey("b");
  EXPECT_THAT(delays_.Settled(1), ElementsAre(50));
}

TEST_F(DelayedWriteTest, SaveOrEndOfAnyDatabaseAndNothingElseSilencesAllOthersForLong) {
  KeyValueStorage database("db");
  KeyValueStorage other("other");
  const auto openAndMove = [&] {
    KeyValueStorage moved(std::move(database));
    database = std::move(moved);
    other = KeyValueStorage("opened");  // an end, too, but one that silences nobody else
  };
  const auto end = [] { KeyValueStorage("ended"); };
  const auto save = [&] {
    other.SetValue<int>("a", 1);
    other.SyncToStorage();
  };
  EXPECT_EQ(TakeCallAfter(database, openAndMove), kCalled);
  EXPECT_EQ(TakeCallAfter(database, end), "");
  EXPECT_TRUE(Change(database));
  database.SyncToStorage();
  EXPECT_EQ(TakeCallAfter(database, save), "");
  EXPECT_TRUE(Change(database));
  database.SyncToStorage();
  EXPECT_EQ(TakeCallAfter(database, [&] { database = std::move(other); }), "");
}

TEST_F(DelayedWriteTest, ArrayThatIsOverwrittenWhileItIsWrittenStaysReadable) {
  KeyValueStorage database("db");
  database.SetValue("a", std::vector<int>{1, 2});
  ara::log::SetSink([&](ara::log::LogLevel, std::string_view, std::string_view line) {
    if (line.find("add value=1 to array") == std::string_view::npos) return;
    const auto overwrite = [&] { database.SetValue("a", std::vector<int>{3, 4}); };
    std::async(std::launch::async, overwrite).wait();
  });
  database.SyncToStorage();
  EXPECT_EQ(ReadFile("db"), R"([{"key":"a","type":"sint32","value":[1,3,4]}])");
}

TEST_F(DelayedWriteTest, DelayedWriteThatWaitsForItsTurnGivesUpWhenItsDatabaseEnds) {
  KeyValueStorage other("other");
  auto database = CreateKeyValueStorage("db");
  // In the middle of another one's save, whose lock the delayed write then waits for.
  ara::log::SetSink([&](ara::log::LogLevel, std::string_view, std::string_view line) {
    if (line.find("database_:other") == std::string_view::npos) return;
    database->SetValue<int>("a", 1);
    delays_.EndOne();  // that of the other one, which is silenced
    delays_.EndOne();
    std::string printed;
    EXPECT_TRUE(WaitUntil([&] { return (printed += out_.Take()) == kCalled; }));
    database.reset();
  });
  other.SetValue<int>("a", 1);
  delays_.Settled(1);
  other.SyncToStorage();
  delays_.Hold(false);
  EXPECT_FALSE(std::filesystem::exists("db"));
}

}  // namespace
}  // namespace ara::per::testing
