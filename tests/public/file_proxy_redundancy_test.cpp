#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <future>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ara/log/sink.h"
#include "ara/per/file_proxy_accessor_factory.h"
#include "crc/crc.h"
#include "tests/support/database_test.h"
#include "tests/support/redundant_file.h"

namespace ara::per::testing {
namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;
using Mode = BasicOperations::OpenMode;

constexpr char kAccessorFile[] = "fileaccess/read_write_accessor_impl.cpp";
constexpr char kRedundantFile[] = ARA_PER_REDUNDANT_DIR "/fileProxy.json";
constexpr Mode kInOut = Mode::in | Mode::out;

std::ptrdiff_t CountOf(const char* directory) {
  const std::filesystem::directory_iterator entries(directory);
  return std::distance(begin(entries), end(entries));
}

std::ptrdiff_t Descriptors() { return CountOf("/proc/self/fd"); }

bool IsAsleep(const std::string& thread) {
  std::ifstream file("/proc/self/task/" + thread + "/stat");  // fails once the thread has ended
  std::string text;
  std::getline(file, text);
  return text.find(") S ") != std::string::npos;
}

/// The number of threads, once all others sleep.
std::ptrdiff_t Threads() {
  WaitUntil([] {
    const std::filesystem::directory_iterator all("/proc/self/task");
    return std::all_of(begin(all), end(all), [](const auto& thread) {
      const std::string number = thread.path().filename();
      return number == std::to_string(::gettid()) || IsAsleep(number);
    });
  });
  return CountOf("/proc/self/task");
}

class FileProxySyncTest : public DatabaseTest {
 protected:
  std::unique_ptr<ReadWriteAccessor> Open(const std::string& content, Mode mode = kInOut) {
    WriteFile("k", content);
    return factory_->CreateRWAccess("k", mode);
  }

  /// Writes a byte. @return whether that armed the delay
  static bool Arms(WriteAccessor& file) {
    const std::ptrdiff_t threads = Threads();
    file.write("A", 1);
    return Threads() != threads;
  }

  std::string TakeAccessorText() { return TakeText(kAccessorFile, "ReadWriteAccessorImpl::", "@"); }

  const std::unique_ptr<FileProxyAccessorFactory> factory_ = CreateFileAccessorFactory(".");
};

TEST_F(FileProxySyncTest, ConfigurationComesFromTheWorkingDirectory) {
  const std::vector<std::pair<const char*, bool>> cases = {
      {"", true},  // no file
      {R"({"DataConfig":{"updateTime":0}})", true},
      {R"({"DataConfig":{"isRedundancy":false,"updateTime":0}})", false},
      {R"({"DataConfig":{"isRedundancy":false,"updateTime":60000}})", true},
  };
  for (const auto& [config, arms] : cases) {
    SCOPED_TRACE(config);
    WriteFile("PersistencyConfig.json", config);
    if (*config == '\0') {
      std::filesystem::remove("PersistencyConfig.json");
    }
    const auto file = Open("abc");
    const std::ptrdiff_t threads = Threads();
    *file << "a";
    EXPECT_EQ(Threads(), threads);
    EXPECT_EQ(Arms(*file), arms);
    EXPECT_FALSE(Arms(*file));
    file->fsync();
    EXPECT_EQ(Arms(*file), arms);
    EXPECT_THAT(TakeAccessorText(), Not(HasSubstr("hecksum")));
  }
  for (const std::size_t target : {79U, 80U}) {
    const std::string begin = dir_.Path().string() + "/";
    std::filesystem::create_directory(begin + std::string(target - begin.size(), 'd'));
    std::filesystem::current_path(begin + std::string(target - begin.size(), 'd'));
    WriteConfig(true, 0, 0);
    EXPECT_EQ(Open("abc")->tell(), target == 79 ? 3 : 0);
  }
}

TEST_F(FileProxySyncTest, FileThatIsNotBelowTheLimitIsFlushedAlone) {
  for (const unsigned int limit : {0U, 9U, 10U, 11U, 4294967295U}) {
    SCOPED_TRACE(limit);
    const bool isRefused = limit <= 10;
    WriteConfig(true, limit, 60000);
    const auto file = Open("0123456789");
    EXPECT_EQ(file->tell(), 10);
    file->seek(std::streampos(0));
    EXPECT_TRUE(Arms(*file));
    file->seek(std::streampos(0));
    const std::ptrdiff_t descriptors = Descriptors();
    TakeLines();
    file->fsync();
    EXPECT_EQ(Descriptors(), descriptors + (isRefused ? 0 : 1));
    EXPECT_EQ(TakeAccessorText(),
              std::string("6 @fsync dataSize is:10 |6 @") +
                  (isRefused ? "fsync the file is max size, it can not to storage the data."
                             : "fileSize = 10, pos=0|6 @read len is 10"
                               "|6 @calculateChecksum checkSum: -1089525408"
                               "|6 @fsync config_.chechSum is:-1089525408"
                               "|6 @calculateChecksum save checksum failed|6 @fsync end."));
    EXPECT_EQ(ReadFile("k"), "A123456789");
    EXPECT_EQ(Arms(*file), !isRefused);
  }
}

TEST_F(FileProxySyncTest, ChecksumIsTakenFromThePositionAndSavedIntoTheDataFile) {
  WriteConfig(true, 1000, 0);
  const std::string config = ReadFile("PersistencyConfig.json");
  const std::string content = R"({"DataConfig":{"checksum":1}})";
  const std::string rest = content.substr(1) + '\0';
  const auto sum = crc::CRC::do_crc32(reinterpret_cast<const unsigned char*>(rest.data()),
                                      static_cast<unsigned int>(rest.size()));
  const auto file = Open(content);
  file->seek(std::streampos(0));
  file->write("{", 1);
  file->fsync();
  EXPECT_THAT(ReadFile("k"), HasSubstr(std::to_string(sum)));
  EXPECT_EQ(ReadFile("PersistencyConfig.json"), config);
  EXPECT_TRUE(file->fail() && !file->eof());
  EXPECT_EQ(file->write("a", 1), 0);  // from position -1 to -1
  file->clear();
  file->seek(std::streampos(1));
  EXPECT_EQ(file->write("a", 1), 1);
}

TEST_F(FileProxySyncTest, DelayedSynchronisationComesOnceAfterTheFirstWriteOfABurst) {
  WriteConfig(false, 0, 30);
  const auto file = Open("");
  const std::ptrdiff_t descriptors = Descriptors();
  for (const char* const content : {"ab", "abab"}) {
    log_.Clear();
    file->write("a", 1);
    file->write("b", 1);
    EXPECT_TRUE(WaitUntil([this] { return log_.Has(6, "ReadWriteAccessorImpl::fsync end."); }));
    EXPECT_EQ(ReadFile("k"), content);
  }
  EXPECT_EQ(Descriptors(), descriptors + 2);
}

TEST_F(FileProxySyncTest, SynchronisationOrEndOfAnyAccessorSilencesAllDelays) {
  const std::ptrdiff_t threads = Threads();
  for (const bool bySync : {true, false}) {
    WriteConfig(false, 0, 0);
    auto other = factory_->CreateRWAccess("other", Mode::out);
    WriteConfig(false, 0, 500);
    const auto file = Open("");
    other->write("b", 1);
    file->write("a", 1);
    TakeLines();
    bySync ? other->fsync() : other.reset();
    EXPECT_EQ(TakeAccessorText(), bySync ? "6 @fsync dataSize is:1 |6 @fsync end." : "");
    EXPECT_EQ(ReadFile("other"), "b");
    EXPECT_TRUE(WaitUntil([&] { return Threads() == threads; }));
    EXPECT_EQ(TakeAccessorText(), "") << bySync;
  }
}

TEST_F(FileProxySyncTest, AccessorThatEndsWaitsForItsDelayedSynchronisation) {
  WriteConfig(false, 0, 1);
  auto file = Open("");
  std::promise<void> syncing;
  std::atomic<bool> ended = false;
  ara::log::SetSink([&, user = std::to_string(::gettid())](auto, auto, std::string_view line) {
    if (line.find("fsync dataSize") != std::string_view::npos) {
      syncing.set_value();
      EXPECT_TRUE(WaitUntil([&] { return ended || IsAsleep(user); }) && !ended);
    }
  });
  file->write("a", 1);
  syncing.get_future().wait();
  file.reset();
  ended = true;
  ara::log::SetSink({});
}

class FileProxyRedundancyTest : public FileProxySyncTest {
 protected:
  void SetUp() override {
    if (!redundant_.isOurs()) {
      GTEST_SKIP() << kRedundantFile << " is not the tests' own or cannot be created";
    }
  }

 private:
  const RedundantFile redundant_{kRedundantFile};
};

void Place(const char* path, const char* content) {
  WriteFile(path, content);
  if (*content == '-') {
    std::filesystem::remove(path);
  }
}

std::string Held(const char* path) { return std::filesystem::exists(path) ? ReadFile(path) : "-"; }

TEST_F(FileProxyRedundancyTest, CopyIsWrittenBehindAFileOfAnotherChecksum) {
  struct Case {
    const char* content;  // "-" for no file, as below
    Mode mode;
    unsigned int checksum;
    const char* copy;
    std::string lines;  // behind that of the checksum
    int position;
    const char* after;
    const char* copyAfter;
  };
  const unsigned int ofAbc = 891568578;
  const unsigned int ofZeros = 4282505490;  // three: at the end of the file nothing is read
  const std::string good = "|6 @ReadWriteAccessorImpl base data is good";
  const std::string begin = " @ReadWriteAccessorImpl save redundancy data to base ";
  const std::string saved = "|6" + begin + "success|6 @fsync end." + good;
  const std::string failed = "|2" + begin + "fail";
  const std::vector<Case> cases = {
      {"abc", kInOut, 0, "XYZ", good, 3, "abc", "XYZ"},
      {"abc", kInOut, ofAbc, "XYZ", good, 3, "abc", "XYZ"},
      {"abc", kInOut, 5, "XYZ", saved, 3, "abcXYZ", "XYZ"},
      {"", kInOut, 5, "XYZ", saved, 0, "XYZ", "XYZ"},
      {"", kInOut, 0, "XYZ", good, 0, "", "XYZ"},
      {"abc", kInOut, 5, "", failed, 3, "abc", ""},
      {"abc", kInOut, 5, "-", failed, 3, "abc", "-"},
      {"abc", Mode::in, 5, "XYZ", failed, 3, "abc", "XYZ"},
      {"abc", Mode::out, 5, "XYZ", failed, 0, "", ""},
      {"abc", kInOut | Mode::ate, 5, "XYZ", failed, 3, "abc", "XYZ"},
      {"abc", kInOut | Mode::ate, ofZeros, "XYZ", "", 3, "abc", "XYZ"},
      {"-", kInOut, 5, "XYZ", failed, -1, "-", "XYZ"},
      {"-", kInOut, 0, "XYZ", "", -1, "-", "XYZ"},
  };
  for (const Case& c : cases) {
    const std::string sum = std::to_string(c.checksum);
    SCOPED_TRACE(std::string(c.content) + " " + sum + " " + c.copy);
    WriteFile("PersistencyConfig.json",
              R"({"DataConfig":{"isRedundancy":true,"maxSize":9,"updateTime":0,"checksum":)" + sum +
                  "}}");
    Place("k", c.content);
    Place(kRedundantFile, c.copy);
    TakeLines();
    const std::ptrdiff_t descriptors = Descriptors();
    auto file = factory_->CreateRWAccess("k", c.mode);
    EXPECT_EQ(Descriptors(), descriptors + (*c.content == '-' ? 0 : 1));
    EXPECT_THAT(TakeAccessorText(),
                EndsWith("|6 @checkSum config_.checksum:" +
                         std::to_string(static_cast<int>(c.checksum)) + " " + c.lines));
    EXPECT_EQ(file->good(), c.lines.find("good") != std::string::npos);
    EXPECT_EQ(file->tell(), c.position);
    file.reset();
    EXPECT_EQ(Held("k"), c.after);
    EXPECT_EQ(Held(kRedundantFile), c.copyAfter);
  }
}

}  // namespace
}  // namespace ara::per::testing
