#include <cstddef>
#include <ctime>
#include <filesystem>
#include <future>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ara/log/sink.h"
#include "ara/per/key_value_storage.h"
#include "tests/support/database_test.h"
#include "tests/support/delays.h"

extern "C" __attribute__((visibility("default"))) int nanosleep(const timespec* time,
                                                                timespec* rest) {
  return ara::per::testing::Delays::OfTheProcess().Sleep(*time, rest);
}

namespace ara::per::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::EndsWith;

constexpr char kOneItem[] = R"([{"key":"a","type":"sint32","value":1}])";
constexpr char kCalled[] = "timer is called\n";

class DelayedWriteTest : public DatabaseTest {
 protected:
  DelayedWriteTest() {
    WriteConfig(false, 0, 50);
    delays_.Hold(true);
  }

  ~DelayedWriteTest() override { EndAllDelays(); }

  /// Ends all delays, of which no database may expect anything, and starts anew.
  void Restart() {
    EndAllDelays();
    delays_.Hold(true);
    ended_ = 0;
  }

  /// The delays so far, once `count` have begun and no thread is on the way to a further one.
  std::vector<long> Armed(std::size_t count) {
    WaitUntil([&] {
      const std::size_t begun = delays_.Asked().size();
      return begun >= count &&
             ThreadCount() <= threads_ + static_cast<std::ptrdiff_t>(begun - ended_);
    });
    return delays_.Asked();
  }

  /// Ends the oldest delay and waits until its thread has done all that it does.
  void EndDelay() {
    const std::ptrdiff_t before = ThreadCount();
    delays_.EndOne();
    ++ended_;
    ASSERT_TRUE(WaitUntil([&] { return ThreadCount() < before; }));
    log_.Lines();  // its lock orders what that thread has done before what follows
  }

  /// Makes a change that arms if the database believes that no delay lasts.
  /// @return the log line of it, which tells what the database believes
  std::string Change(KeyValueStorage& database) {
    log_.Clear();
    database.SetValue<int>("a", 1);
    return TakeLines(kEngineFile).front();
  }

  void EndAllDelays() {
    delays_.Hold(false);
    EXPECT_TRUE(WaitUntil([this] { return ThreadCount() <= threads_; }));
  }

  Delays& delays_ = Delays::OfTheProcess();
  const std::ptrdiff_t threads_ = ThreadCount();
  std::size_t ended_ = 0;
};

TEST_F(DelayedWriteTest, DelayComesFromTheConfigurationFile) {
  const std::vector<std::pair<const char*, std::vector<long>>> cases = {
      {"", {60000}},  // no file
      {R"({"DataConfig":{"updateTime":7}})", {6000}},
      {R"({"dataConfig":{"isRedundancy":false}})", {6000}},
      {"{", {}},
      {R"({"DataConfig":{"isRedundancy":false,"updateTime":1500}})", {1500}},
      {R"({"DataConfig":{"isRedundancy":false,"updateTime":0}})", {}},
  };
  for (const auto& [config, delays] : cases) {
    SCOPED_TRACE(config);
    WriteFile("PersistencyConfig.json", config);
    if (*config == '\0') {
      std::filesystem::remove("PersistencyConfig.json");
    }
    Restart();
    KeyValueStorage database("db");
    WriteConfig(false, 0, 9999);  // read when a database is opened, and never again
    EXPECT_THAT(Change(database), EndsWith("isTimer=0"));
    EXPECT_EQ(Armed(delays.size()), delays);
    EXPECT_THAT(Change(database), EndsWith(delays.empty() ? "isTimer=0" : "isTimer=1"));
  }
}

TEST_F(DelayedWriteTest, WorkingDirectoryOf200BytesHoldsNoConfiguration) {
  for (const std::size_t target : {199U, 200U}) {
    const std::string begin = dir_.Path().string() + "/";
    std::filesystem::create_directory(begin + std::string(target - begin.size(), 'd'));
    std::filesystem::current_path(begin + std::string(target - begin.size(), 'd'));
    WriteConfig(false, 0, 7);
    log_.Clear();
    const KeyValueStorage database("db");
    EXPECT_EQ(log_.Has(3, "config file is not exit"), target == 200);
  }
}

TEST_F(DelayedWriteTest, BurstIsWrittenOnceWhenItsDelayEnds) {
  KeyValueStorage database("db");
  EXPECT_THAT(Change(database), EndsWith("isTimer=0"));
  database.SetValue<int>("b", 2);
  database.RemoveKey("b");
  EXPECT_THAT(Change(database), EndsWith("isTimer=1"));
  EXPECT_THAT(Armed(1), ElementsAre(50));
  EXPECT_FALSE(std::filesystem::exists("db"));
  log_.Clear();
  EndDelay();
  EXPECT_EQ(out_.Take(), kCalled);
  EXPECT_THAT(TakeLines(kEngineFile),
              ElementsAre("6 db_changed_:1 ", "6 syncToLocalStorage db_changed_ database_:db ",
                          "6 KeyValueStorage::Impl::syncToLocalStorage end"));
  EXPECT_EQ(ReadFile("db"), kOneItem);
  EXPECT_THAT(Change(database), EndsWith("isTimer=0"));
  EXPECT_THAT(Armed(2), ElementsAre(50, 50));
}

TEST_F(DelayedWriteTest, CallThatFindsNoChangeLeavesTheDatabaseDisarmedForLong) {
  KeyValueStorage database("db");
  database.RemoveKey("a");
  EXPECT_THAT(Armed(1), ElementsAre(50));
  EndDelay();
  EXPECT_EQ(out_.Take(), kCalled);
  EXPECT_FALSE(std::filesystem::exists("db"));
  database.SyncToStorage();  // nothing changed: leaves the flag, too
  EXPECT_THAT(Change(database), EndsWith("isTimer=1"));
  EXPECT_THAT(Armed(1), ElementsAre(50));
  database.SyncToStorage();
  database.RemoveAllKeys();
  EXPECT_THAT(Armed(2), ElementsAre(50, 50));
  database.SyncToStorage();
  EXPECT_EQ(ReadFile("db"), "[]");
  EXPECT_THAT(Change(database), EndsWith("isTimer=0"));
}

TEST_F(DelayedWriteTest, SyncOrEndOfAnyDatabaseSilencesAllOthersForLong) {
  for (const bool bySync : {true, false}) {
    SCOPED_TRACE(bySync);
    Restart();
    KeyValueStorage database("db");
    auto other = CreateKeyValueStorage("other");
    EXPECT_THAT(Change(database), EndsWith("isTimer=0"));
    Armed(1);
    if (bySync) {
      other->SetValue<int>("a", 1);
      Armed(2);
      other->SyncToStorage();
      EndDelay();
    } else {
      other.reset();
    }
    EndDelay();
    EXPECT_EQ(out_.Take(), "");
    EXPECT_FALSE(std::filesystem::exists("db"));
    EXPECT_THAT(Change(database), EndsWith("isTimer=1"));
  }
}

TEST_F(DelayedWriteTest, OpeningMovingAndTheEndOfAShellSilenceNobody) {
  KeyValueStorage armed("db");
  Change(armed);
  Armed(1);
  KeyValueStorage database(std::move(armed));
  KeyValueStorage assigned("assigned");
  {
    KeyValueStorage other("other");
    assigned = std::move(other);
  }
  EndDelay();
  EXPECT_EQ(out_.Take(), kCalled);
  EXPECT_EQ(ReadFile("db"), kOneItem);
}

TEST_F(DelayedWriteTest, DelayedWriteOfADatabaseThatIsGoneDoesNotHappen) {
  KeyValueStorage database("db");
  database.SetValue<int>("a", 1);
  EXPECT_THAT(Armed(1), ElementsAre(50));
  database = KeyValueStorage("other");
  EndDelay();
  EXPECT_EQ(out_.Take(), "");
  EXPECT_FALSE(std::filesystem::exists("db"));
}

TEST_F(DelayedWriteTest, DelayedWriteThatWaitsForItsTurnGivesUpWhenItsDatabaseEnds) {
  WriteConfig(false, 0, 0);
  KeyValueStorage other("other");
  other.SetValue<int>("a", 1);
  WriteConfig(false, 0, 50);
  auto database = CreateKeyValueStorage("db");
  std::promise<void> saving;
  std::promise<void> goOn;
  ara::log::SetSink([&](ara::log::LogLevel, std::string_view, std::string_view line) {
    if (line.find("syncToLocalStorage db_changed_ database_:other") != std::string_view::npos) {
      saving.set_value();
      goOn.get_future().wait();
    }
  });
  const auto save = std::async(std::launch::async, [&] { other.SyncToStorage(); });
  saving.get_future().wait();
  database->SetValue<int>("a", 1);
  delays_.EndOne();
  std::string printed;
  EXPECT_TRUE(WaitUntil([&] { return (printed += out_.Take()) == kCalled; }));
  database.reset();
  goOn.set_value();
  EndAllDelays();
  ara::log::SetSink({});
  EXPECT_FALSE(std::filesystem::exists("db"));
}

}  // namespace
}  // namespace ara::per::testing
