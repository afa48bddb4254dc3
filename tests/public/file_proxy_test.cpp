#include <sys/stat.h>

#include <chrono>
#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <future>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ara/log/sink.h"
#include "ara/per/file_proxy_accessor_factory.h"
#include "tests/support/database_test.h"
#include "tests/support/delays.h"
#include "tests/support/redundant_file.h"

namespace ara::per::testing {
namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::UnorderedElementsAre;
using Mode = BasicOperations::OpenMode;
using Direction = BasicOperations::SeekDirection;

constexpr char kRedundantFile[] = ARA_PER_REDUNDANT_DIR "/fileProxy.json";
constexpr Mode kInOut = Mode::in | Mode::out;

std::ptrdiff_t Descriptors() { return EntryCount("/proc/self/fd"); }

/// The flags, "g" for none, and the position: "g@3".
std::string State(BasicOperations& file) {
  EXPECT_TRUE(!file == file.fail() && static_cast<bool>(file) != file.fail());
  return std::string(file.good() ? "g" : "") + (file.eof() ? "e" : "") + (file.fail() ? "f" : "") +
         (file.bad() ? "b" : "") + "@" + std::to_string(file.tell());
}

/// Does a step: an operation and its argument.
/// @return its result, a blank, the state, and what it has left behind: a delay, a descriptor
std::string Do(ReadWriteAccessor& file, const std::string& step) {
  const std::string name = step.substr(0, step.find(' '));
  std::string text = step == name ? "" : step.substr(name.size() + 1);
  const long number = std::strtol(text.c_str(), nullptr, 10);
  const auto read = [&] {
    std::string bytes(static_cast<std::size_t>(number), '\0');
    const long length = file.read(bytes.data(), bytes.size());
    return std::to_string(length) + ":" + bytes.substr(0, bytes.find('\0'));
  };
  const auto manipulate = [](WriteAccessor& same) -> WriteAccessor& { return same << "m"; };
  const std::map<std::string, std::function<std::string()>> operations = {
      {"read", read},
      {"write", [&] { return std::to_string(file.write(text.data(), text.size())); }},
      {"null", [&] { return std::to_string(file.read(nullptr, 5) + file.write(nullptr, 5)); }},
      {"fsync", [&] { return file.fsync(), ""; }},
      {"<<", [&] { return &(file << text) == &file ? "" : "another"; }},
      {">>", [&] { return &(file >> text) == &file ? text : "another"; }},
      {"getline", [&] { return &file.getline(text, ',') == &file ? text : "another"; }},
      {"manipulate", [&] { return &(file << manipulate) == &file ? "" : "another"; }},
      {"peek", [&] { return std::to_string(file.peek()); }},
      {"get", [&] { return std::to_string(file.get()); }},
      {"size", [&] { return std::to_string(file.fileSize()); }},
      {"seek", [&] { return file.seek(std::streampos(number)), ""; }},
      {"beg", [&] { return file.seek(number, Direction::beg), ""; }},
      {"cur", [&] { return file.seek(number, Direction::cur), ""; }},
      {"end", [&] { return file.seek(number, Direction::end), ""; }},
      {"clear", [&] { return file.clear(), ""; }},
  };
  const std::size_t delays = Delays::OfTheProcess().Settled().size();
  const std::ptrdiff_t descriptors = Descriptors();
  const std::string result = operations.at(name)();
  return (result.empty() ? "" : result + " ") + State(file) +
         (Delays::OfTheProcess().Settled().size() > delays ? " +delay" : "") +
         (Descriptors() > descriptors ? " +file" : "");
}

/// Does the steps of a text such as "seek 3 = g@3 | read 2 = 2:45 g@5", which tells the outcomes.
void Walk(ReadWriteAccessor& file, const std::string& steps) {
  std::string done;
  for (std::size_t begin = 0; begin < steps.size();) {
    const std::string step = steps.substr(begin, steps.find(" = ", begin) - begin);
    done += (done.empty() ? "" : " | ") + step + " = " + Do(file, step);
    const std::size_t end = steps.find(" | ", begin);
    begin = end == std::string::npos ? steps.size() : end + 3;
  }
  EXPECT_EQ(done, steps);
}

/// Delays end when the test says so.
class FileProxyTest : public DatabaseTest {
 protected:
  FileProxyTest() { delays_.Hold(true); }

  ~FileProxyTest() override { delays_.Hold(false); }

  std::unique_ptr<ReadWriteAccessor> Open(const std::string& content, Mode mode = kInOut) {
    WriteFile("k", content);
    return factory_->CreateRWAccess("k", mode);
  }

  void ExpectSteps(const char* content, Mode mode, const char* steps, const std::string& after) {
    Walk(*Open(content, mode), steps);
    EXPECT_EQ(ReadFile("k"), after) << steps;
  }

  std::string TakeAccessorText() {
    return TakeText("fileaccess/read_write_accessor_impl.cpp", "ReadWriteAccessorImpl::", "@");
  }

  Delays& delays_ = Delays::OfTheProcess();
  const std::unique_ptr<FileProxyAccessorFactory> factory_ = CreateFileAccessorFactory(".");
};

TEST_F(FileProxyTest, SequencesMoveOnePositionAndSetTheFlags) {
  ExpectSteps("0123456789", kInOut,
              "null = -2 g@0 | read 4 = 4:0123 g@4 | write AB = 2 g@6 | read 2 = 2:67 g@8 | "
              "<< C = g@9 | read 1 = 1:9 g@10 | seek 0 = g@0 | manipulate = g@1",
              "m123AB67C9");
  // `peek` and `get` go by the stream, which a plain `seek` leaves.
  ExpectSteps("012345678\xFF", kInOut,
              "seek 3 = g@3 | get = 48 g@3 | get = 49 g@3 | cur 2 = g@5 | end -1 = g@9 | "
              "get = 255 g@9 | beg 1 = g@1 | seek 7 = g@7 | size = 10 g@7 | peek = 55 g@7 | "
              "write A = 1 g@8 | get = 56 g@8 | write B = 1 g@9 | get = 255 g@9 | peek = -1 e@10",
              "0123456AB\xFF");
  ExpectSteps("ab cd,ef", kInOut,
              ">> = ab g@2 | >> = cd,ef ef@8 | >> = f@8 | clear = g@8 | seek 3 = g@3 | "
              "getline = cd g@6 | getline = ef ef@8",
              "ab cd,ef");
  ExpectSteps("0123456789", kInOut,
              "seek 7 = g@7 | read 4 = 3:789 ef@10 | seek 4 = ef@10 | null = -2 ef@10 | "
              "read 0 = -1: ef@10 | write = -1 ef@10 | read 2 = -5: f@10 | clear = g@10 | "
              "seek 14 = g@14 | read 3 = -4: ef@10 | clear = g@10 | "
              "seek 3000000000 = g@3000000000 | read 3 = 1294967306: ef@10",
              "0123456789");
  // What is written in a failed state is a change, and one with `<<` is none.
  ExpectSteps("0123456789", kInOut,
              "seek 8 = g@8 | read 5 = 2:89 ef@10 | seek 3 = ef@10 | write X = -4 ef@10 | "
              "seek 3 = ef@10 | << X = ef@10 | cur 1 = ef@10 | size = 0 ef@10 | "
              "fsync = f@10 +file | clear = g@10 | seek 12 = g@12 | << Z = g@13 | fsync = g@13 | "
              "cur -20 = f@13",
              std::string("0123456789\0\0Z", 13));
  ExpectSteps("abc", Mode::in, "write X = 0 fb@3", "abc");
  ExpectSteps("abc", Mode::app, "write d = 1 g@4 | seek 0 = g@0 | write e = 1 g@1", "abcde");
  ExpectSteps("abc", Mode{0xC0}, "null = -2 f@3", "abc");
}

TEST_F(FileProxyTest, StepsLogTheirLines) {
  const auto readable = Open("", Mode::in);
  log_.Clear();
  const auto file = Open("0123456789,AB");
  file->fsync();
  file->write("ab\0c", 1);
  file->write("abc\0", 4);
  for (const char* const step : {"fsync", "read 2", "<< x", "fsync", "getline", ">>", "fsync"}) {
    Do(*file, step);
  }
  Do(*readable, "write z");
  Do(*readable, "fsync");
  EXPECT_EQ(
      TakeAccessorText(),
      "6 configPath=" + dir_.Path().string() +
          "/PersistencyConfig.json pos=0, filename=./k|6 @ReadWriteAccessorImpl base data is "
          "good|6 @fsync end.|6 write len=1 :a, pos=0|6 @write end.1|6 write len=4 :abc, pos=1"
          "|6 @write end.4|6 @fsync dataSize is:13 |6 @fsync end.|6 @fileSize = 13, pos=5"
          "|6 @read len is 2|6 @operator<< x |6 @fsync end.|6 @getline string:89 "
          "|6 @operator>> string:AB |6 @fsync end.|6 write len=1 :z, pos=0"
          "|2 @init stream is bad|6 @fsync end.");
}

TEST_F(FileProxyTest, FactoryListsTestsAndDeletesAndLogsItsSteps) {
  std::filesystem::create_directories("sub/empty");
  std::filesystem::create_symlink("PersistencyConfig.json", "link");
  ASSERT_EQ(::mkfifo("fifo", 0600), 0);
  for (const char* const key : {"sub", "link", "fifo", "", "PersistencyConfig"}) {
    EXPECT_FALSE(factory_->HasKey(key)) << key;
  }
  std::filesystem::rename("PersistencyConfig.json", "k");
  log_.Clear();
  const std::ptrdiff_t descriptors = Descriptors();
  EXPECT_TRUE(factory_->HasKey("k"));
  EXPECT_EQ(Descriptors(), descriptors + 1);
  for (const char* const key : {"sub", "sub/empty", "link", "none"}) {
    factory_->DeleteKey(key);
  }
  EXPECT_TRUE(std::filesystem::is_empty("sub") && !std::filesystem::is_symlink("link"));
  factory_->CreateReadAccess("y", Mode::out);  // the mode counts, not the kind of access
  EXPECT_FALSE(factory_->CreateWriteAccess("none", Mode::in)->good());
  factory_->CreateRWAccess("z", Mode::out);
  EXPECT_EQ(TakeText("fileaccess/file_proxy_factory_impl.cpp", "FileProxyFactoryImpl::", "@"),
            "6 @HasKey key:k|6 @GetAllKeys dir_entry->d_name is k|6 @DeleteKey key:sub"
            "|6 @DeleteKey key:sub/empty|6 @DeleteKey key:link|6 @DeleteKey key:none"
            "|6 CreateReadAccess key:./y|6 CreateWriteAccess key:./none |6 CreateRWAccess ./z ");
  EXPECT_FALSE(RecoverFileProxy("k") || ResetFileProxy("k"));
  EXPECT_THAT(factory_->GetAllKeys(), UnorderedElementsAre("k", "y", "z"));
  EXPECT_TRUE(CreateFileAccessorFactory("none")->GetAllKeys().empty());
}

TEST_F(FileProxyTest, KeysThatAreNoFilesAndFilesThatGoTellItByTheirFlags) {
  ASSERT_EQ(::mkfifo("fifo", 0600), 0);
  Walk(*factory_->CreateRWAccess("fifo", kInOut),
       "size = 4294967295 f@-1 | write a = 0 f@-1 | read 1 = 0: f@-1");
  EXPECT_TRUE(factory_->CreateRWAccess(".", kInOut)->fail());
  // It has no end to go to, but positions.
  std::filesystem::create_symlink("/proc/version", "endless");
  Walk(*factory_->CreateRWAccess("endless", Mode::in),
       "seek 6 = g@6 | read 1 = -7: f@-1 | clear = g@-1 | get = 118 g@-1");
  const auto file = Open("abc");
  std::filesystem::remove("k");
  Walk(*file, "write d = 1 g@1 | fsync = g@1 | read 3 = 2:bc ef@-1");
  WriteFile("k", "");
  std::filesystem::resize_file("k", (std::uintmax_t{1} << 32) + 10);
  Walk(*factory_->CreateRWAccess("k", kInOut), "size = 10 g@0 | end -2 = g@4294967304");
  WriteConfig(true, 0, 0);
  std::filesystem::create_symlink("/dev/full", "full");
  Walk(*factory_->CreateRWAccess("full", kInOut), "write a = 1 g@1 | fsync = fb@1");
}

TEST_F(FileProxyTest, WriterWaitsForAnotherAndTheEndForADelayedSynchronisation) {
  const auto second = factory_->CreateRWAccess("second", Mode::out);
  WriteConfig(false, 0, 1);
  auto first = Open("");
  std::future<void> other;
  ara::log::SetSink([&](auto, auto, std::string_view line) {
    const bool writes = line.find("write len=1 :1") != std::string_view::npos;
    if (writes || line.find("fsync dataSize") != std::string_view::npos) {
      other = std::async(std::launch::async, [&, writes] {
        writes ? static_cast<void>(second->write("2", 1)) : first.reset();
      });
      EXPECT_EQ(other.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout);
    }
  });
  first->write("1", 1);
  delays_.EndOne();
  delays_.Settled();
  ara::log::SetSink({});
  other.wait();
  EXPECT_EQ(first, nullptr);
}

TEST_F(FileProxyTest, ConfigurationComesFromTheWorkingDirectory) {
  const std::string tooLong(80 - dir_.Path().string().size() - 1, 'd');
  const std::string complete = R"({"DataConfig":{"isRedundancy":false,"updateTime":)";
  const std::vector<std::tuple<std::string, std::string, std::vector<long>>> cases = {
      {".", complete + "0}}", {}},
      {".", complete + "70000}}", {70000}},
      {".", R"({"DataConfig":{"updateTime":0}})", {60000}},
      {tooLong.substr(1), complete + "0}}", {}},
      {tooLong, complete + "0}}", {60000}},
  };
  for (const auto& [directory, config, delays] : cases) {
    SCOPED_TRACE(directory + config);
    std::filesystem::create_directory(dir_.Path() / directory);
    std::filesystem::current_path(dir_.Path() / directory);
    WriteFile("PersistencyConfig.json", config);
    delays_.Hold(true);
    const auto file = Open("abc");
    const std::string armed = delays.empty() ? "" : " +delay";
    Walk(*file, "<< a = g@1 | write b = 1 g@2" + armed + " | write c = 1 g@3");
    EXPECT_EQ(delays_.Settled(), delays);
  }
}

TEST_F(FileProxyTest, FileThatIsNotBelowTheLimitIsFlushedAlone) {
  for (const unsigned int limit : {0U, 10U, 11U, 4294967295U}) {
    SCOPED_TRACE(limit);
    WriteConfig(true, limit, 60000);
    const auto file = Open("0123456789");
    const bool isRefused = limit <= 10;
    Walk(*file, "null = -2 g@10 | seek 0 = g@0 | write A = 1 g@1 +delay | seek 0 = g@0");
    Walk(*file, isRefused ? "fsync = g@0 | write B = 1 g@1"
                          : "fsync = g@10 +file | write B = 1 g@11 +delay");
    EXPECT_THAT(TakeAccessorText(),
                HasSubstr(std::string("|6 @fsync dataSize is:10 |6 @") +
                          (isRefused ? "fsync the file is max size, it can not to storage the data."
                                     : "fileSize = 10, pos=0|6 @read len is 10"
                                       "|6 @calculateChecksum checkSum: -1089525408"
                                       "|6 @fsync config_.chechSum is:-1089525408"
                                       "|6 @calculateChecksum save checksum failed|6 @fsync end.") +
                          "|6 write len=1 :B"));
    EXPECT_EQ(ReadFile("k"), "A123456789");
  }
}

TEST_F(FileProxyTest, ChecksumIsTakenFromThePositionAndSavedIntoTheDataFile) {
  WriteConfig(true, 1000, 0);
  const auto file = Open(R"({"DataConfig":{"checksum":1}})");
  Walk(*file,
       "seek 0 = g@0 | write { = 1 g@1 | fsync = f@38 +file | write a = 0 f@38 | clear = g@38 | "
       "seek 1 = g@1 | write a = 1 g@2");
  // The sum of all but the first byte, and of a zero.
  EXPECT_EQ(ReadFile("k"), R"({"DataConfig":{"checksum":1780448702}})");
}

using FileProxyRedundancyTest = FileProxyTest;

TEST_F(FileProxyRedundancyTest, CopyIsWrittenBehindAFileOfAnotherChecksum) {
  const RedundantFile redundant(kRedundantFile);
  if (!redundant.isOurs()) {
    GTEST_SKIP() << kRedundantFile << " is not the tests' own or cannot be created";
  }
  const auto expect = [&](const char* key, const char* content, Mode mode, int sum,
                          const char* copy, const char* outcome, const std::string& lines) {
    WriteFile("PersistencyConfig.json", R"({"DataConfig":{"isRedundancy":true,"checksum":)" +
                                            std::to_string(static_cast<unsigned int>(sum)) +
                                            R"(,"maxSize":9,"updateTime":0}})");
    WriteFile(key, content);
    WriteFile(kRedundantFile, copy);
    if (*copy == '\0') {
      std::filesystem::remove(kRedundantFile);
    }
    const std::string state = State(*factory_->CreateRWAccess(key, mode)) + " ";
    EXPECT_EQ(state + ReadFile(key) + " " + ReadFile(kRedundantFile), outcome) << sum;
    EXPECT_THAT(TakeAccessorText(), EndsWith("config_.checksum:" + std::to_string(sum) + lines));
  };
  const std::string good = " |6 @ReadWriteAccessorImpl base data is good";
  const std::string begin = " @ReadWriteAccessorImpl save redundancy data to base ";
  const std::string saved = " |6" + begin + "success|6 @fsync end." + good.substr(1);
  const std::string failed = " |2" + begin + "fail";
  expect("k", "abc", kInOut, 0, "XYZ", "g@3 abc XYZ", good);
  expect("k", "abc", kInOut, 891568578, "XYZ", "g@3 abc XYZ", good);
  expect("k", "abc", kInOut, 5, "XYZ", "g@3 abcXYZ XYZ", saved);
  expect("k", "", kInOut, 5, "XYZ", "g@0 XYZ XYZ", saved);
  expect("k", "abc", kInOut, 5, "", "f@3 abc ", failed);
  expect("k", "abc", Mode::out, 5, "XYZ", "f@0  ", failed);
  expect("none/k", "", kInOut, 5, "XYZ", "f@-1  XYZ", failed);
  // At the end nothing is read, and the sum is that of three zeros.
  expect("k", "abc", kInOut | Mode::ate, -12461806, "XYZ", "f@3 abc XYZ", " ");
}

}  // namespace
}  // namespace ara::per::testing
