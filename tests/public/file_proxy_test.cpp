#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <future>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ara/log/sink.h"
#include "ara/per/file_proxy_accessor_factory.h"
#include "tests/support/database_test.h"
#include "tests/support/thrown.h"

static std::atomic<off_t> drift = 0;  // of each position that the system tells

/// Stands before the C library's function.
extern "C" __attribute__((visibility("default"))) off64_t lseek64(int file, off64_t offset,
                                                                  int whence) noexcept {
  static std::atomic<off_t> drifted = 0;
  return ::syscall(SYS_lseek, file, offset, whence) + (drifted += drift);
}

namespace ara::per::testing {
namespace {

using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::UnorderedElementsAre;
using Mode = BasicOperations::OpenMode;
using Direction = BasicOperations::SeekDirection;

constexpr char kAccessorFile[] = "fileaccess/read_write_accessor_impl.cpp";
constexpr char kFactoryFile[] = "fileaccess/file_proxy_factory_impl.cpp";
constexpr Mode kInOut = Mode::in | Mode::out;

static_assert(!std::is_convertible_v<ReadWriteAccessor&, bool>);

/// The flags, "g" for none, and the position: "g@3".
std::string State(BasicOperations& file) {
  EXPECT_TRUE(!file == file.fail() && static_cast<bool>(file) != file.fail());
  return std::string(file.good() ? "g" : "") + (file.eof() ? "e" : "") + (file.fail() ? "f" : "") +
         (file.bad() ? "b" : "") + "@" + std::to_string(file.tell());
}

/// Does a step: an operation and its argument. @return its result, a blank, and the state
std::string Do(ReadWriteAccessor& file, const std::string& step) {
  const std::size_t blank = step.find(' ');
  std::string text = blank == std::string::npos ? "" : step.substr(blank + 1);
  const auto number = [&] { return std::stol(text); };
  const auto seek = [&](Direction from) { return file.seek(number(), from), ""; };
  const auto read = [&] {
    std::string bytes(static_cast<std::size_t>(number()), '\0');
    const long length = file.read(bytes.data(), bytes.size());
    return std::to_string(length) + ":" + bytes.substr(0, bytes.find('\0'));
  };
  const auto manipulate = [](WriteAccessor& same) -> WriteAccessor& { return same << "m"; };
  const std::map<std::string, std::function<std::string()>> operations = {
      {"look", [] { return ""; }},
      {"read", read},
      {"write", [&] { return std::to_string(file.write(text.data(), text.size())); }},
      {"fsync", [&] { return file.fsync(), ""; }},
      {"<<", [&] { return &(file << text) == &file ? "" : "another"; }},
      {">>", [&] { return &(file >> text) == &file ? text : "another"; }},
      {"getline", [&] { return &file.getline(text, ',') == &file ? text : "another"; }},
      {"manipulate", [&] { return &(file << manipulate) == &file ? "" : "another"; }},
      {"peek", [&] { return std::to_string(file.peek()); }},
      {"get", [&] { return std::to_string(file.get()); }},
      {"size", [&] { return std::to_string(file.fileSize()); }},
      {"seek", [&] { return file.seek(std::streampos(number())), ""; }},
      {"beg", [&] { return seek(Direction::beg); }},
      {"cur", [&] { return seek(Direction::cur); }},
      {"end", [&] { return seek(Direction::end); }},
      {"clear", [&] { return file.clear(), ""; }},
  };
  const std::string result = operations.at(step.substr(0, blank))();
  return (result.empty() ? "" : result + " ") + State(file);
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

class FileProxyTest : public DatabaseTest {
 protected:
  std::unique_ptr<ReadWriteAccessor> Open(const char* content, Mode mode = kInOut) {
    WriteFile("k", content);
    return factory_->CreateRWAccess("k", mode);
  }

  const std::unique_ptr<FileProxyAccessorFactory> factory_ = CreateFileAccessorFactory(".");
};

TEST_F(FileProxyTest, SequencesMoveOnePositionAndSetTheFlags) {
  struct Case {
    const char* content;
    Mode mode;
    const char* steps;
    std::string after;
  };
  const std::vector<Case> cases = {
      {"0123456789", kInOut,
       "look = g@0 | read 4 = 4:0123 g@4 | write AB = 2 g@6 | read 2 = 2:67 g@8 | << C = g@9 | "
       "read 1 = 1:9 g@10 | seek 0 = g@0 | manipulate = g@1",
       "m123AB67C9"},
      {"0123456789", kInOut,  // peek and get go by the stream, which a plain seek leaves
       "seek 3 = g@3 | peek = 48 g@3 | get = 48 g@3 | get = 49 g@3 | cur 2 = g@5 | "
       "peek = 53 g@5 | end -1 = g@9 | get = 57 g@9 | beg 1 = g@1 | peek = 49 g@1 | seek 7 = g@7 | "
       "size = 10 g@7 | peek = 55 g@7 | write A = 1 g@8 | get = 56 g@8 | write B = 1 g@9",
       "0123456AB9"},
      {"\xFF", kInOut,
       "peek = 255 g@0 | get = 255 g@0 | peek = -1 e@1 | clear = g@0 | read 1 = 1:\xFF g@1",
       "\xFF"},
      {"ab cd,ef", kInOut,
       ">> = ab g@2 | >> = cd,ef ef@8 | >> = f@8 | clear = g@8 | seek 3 = g@3 | getline = cd g@6 | "
       "getline = ef ef@8",
       "ab cd,ef"},
      {"0123456789", kInOut,
       "seek 7 = g@7 | read 4 = 3:789 ef@10 | seek 4 = ef@10 | read 2 = -5: f@10 | clear = g@10 | "
       "read 2 = 0: f@10 | clear = g@10 | seek 14 = g@14 | read 3 = -4: ef@10 | clear = g@10 | "
       "seek 3000000000 = g@3000000000 | read 3 = 1294967306: ef@10",
       "0123456789"},
      {"0123456789", kInOut,  // writing in a failed state
       "seek 8 = g@8 | read 5 = 2:89 ef@10 | write X = 0 ef@10 | seek 3 = ef@10 | "
       "write X = -4 ef@10 | seek 3 = ef@10 | << X = ef@10 | cur 1 = ef@10 | size = 0 ef@10 | "
       "fsync = f@10 | clear = g@10 | seek 1 = g@1 | write Z = 1 g@2 | cur -5 = f@10",
       "0Z23456789"},
      {"abc", kInOut,
       "seek 4 = g@4 | write d = 1 g@5 | fsync = g@5 | fsync = g@5 | "
       "<< e = g@6 | fsync = g@6",
       std::string("abc\0de", 6)},
      {"abc", Mode::in,
       "write X = 0 fb@3 | peek = -1 fb@3 | clear = g@3 | seek 1 = g@1 | "
       "<< X = fb@3",
       "abc"},
      {"abc", Mode::out, "write abcd = 4 g@4 | seek 1 = g@1 | read 2 = 3: ef@4", "abcd"},
      {"abc", Mode::app, "write d = 1 g@4 | seek 0 = g@0 | write e = 1 g@1", "abcde"},
  };
  for (const Case& c : cases) {
    Walk(*Open(c.content, c.mode), c.steps);
    EXPECT_EQ(ReadFile("k"), c.after) << c.steps;
  }
}

TEST_F(FileProxyTest, NothingToReadOrWriteAndAWrongDirectionChangeNothing) {
  const auto file = Open("0123456789");
  char byte = '!';
  Walk(*file, "seek 9 = g@9 | read 2 = 1:9 ef@10 | seek 3 = ef@10");
  log_.Clear();
  const std::vector<long> results = {file->read(nullptr, 5), file->read(&byte, 0),
                                     file->write(nullptr, 5), file->write(&byte, 0)};
  EXPECT_THAT(results, Each(-1));
  const std::string text = "Seek_dir not handled in switch statement";
  EXPECT_EQ(Thrown<std::invalid_argument>([&] { file->seek(1, Direction{3}); }), text);
  EXPECT_THAT(TakeLines(), ElementsAre("5 std::ios_base::seekdir ToSeekdir " + text));
  Walk(*file, "look = ef@10 | clear = g@3");
}

TEST_F(FileProxyTest, StepsLogTheirLines) {
  const std::unique_ptr<char[]> unended(new char[4]{'a', 'b', '\0', 'c'});
  const auto file = Open("0123456789");
  for (const char* const step :
       {"fsync", "write abc", "fsync", "read 2", "<< x", "fsync", ">>", "size", "write y", "fsync",
        "seek 0", "clear", "getline", "clear", "read 1", "clear"}) {
    Do(*file, step);
  }
  file->seek(std::streampos(0));
  file->write(unended.get(), 1);
  file->write(unended.get(), 4);
  EXPECT_EQ(TakeText(kAccessorFile, "ReadWriteAccessorImpl::", "@"),
            "6 configPath=" + dir_.Path().string() +
                "/PersistencyConfig.json pos=0, filename=./k|6 @ReadWriteAccessorImpl base data is "
                "good|6 @fsync end.|6 write len=3 :abc, pos=0|6 @write end.3"
                "|6 @fsync dataSize is:10 |6 @fsync end.|6 @fileSize = 10, pos=3|6 @read len is 2"
                "|6 @operator<< x |6 @fsync end.|6 @operator>> string:6789 |6 @fileSize = 0, pos=-1"
                "|6 write len=1 :y, pos=-1|6 @write end.0|6 @fsync dataSize is:-1 |6 @fsync end."
                "|6 @getline string:abc34x6789 |6 @fileSize = 0, pos=-1|6 @read len is 0"
                "|6 write len=1 :a, pos=0|6 @write end.1|6 write len=4 :ab, pos=1|6 @write end.4");
}

TEST_F(FileProxyTest, FactoryListsTestsAndDeletesAndLogsItsSteps) {
  const auto taken = [this] { return TakeText(kFactoryFile, "FileProxyFactoryImpl::", "@"); };
  std::filesystem::remove("PersistencyConfig.json");
  std::filesystem::create_directories("sub/empty");
  std::filesystem::create_symlink("a", "link");
  ASSERT_EQ(::mkfifo("fifo", 0600), 0);
  WriteFile("sub/x", "");
  WriteFile("a", "abc");
  using Entries = std::filesystem::directory_iterator;
  const auto descriptors = [] { return std::distance(Entries("/proc/self/fd"), Entries()); };
  const std::ptrdiff_t before = descriptors();
  EXPECT_TRUE(factory_->HasKey("a"));
  EXPECT_EQ(descriptors(), before + 1);
  EXPECT_EQ(taken(), "6 @HasKey key:a|6 @GetAllKeys dir_entry->d_name is a");
  for (const char* const key : {"sub", "link", "fifo", "sub/x", "A", ""}) {
    EXPECT_FALSE(factory_->HasKey(key)) << key;
  }
  taken();
  for (const char* const key : {"sub", "sub/x", "sub/empty", "link", "none"}) {
    factory_->DeleteKey(key);
    EXPECT_EQ(taken(), std::string("6 @DeleteKey key:") + key);
  }
  EXPECT_TRUE(std::filesystem::is_empty("sub") && !std::filesystem::is_symlink("link"));
  WriteFile("b", "");
  EXPECT_THAT(factory_->GetAllKeys(), UnorderedElementsAre("a", "b"));
  for (const char* const path : {"none", "a", "", "sub"}) {
    EXPECT_THAT(CreateFileAccessorFactory(path)->GetAllKeys(), ElementsAre()) << path;
  }
  taken();
  factory_->CreateReadAccess("sub/y", Mode::out);  // the mode counts, not the kind of access
  EXPECT_FALSE(factory_->CreateWriteAccess("none", Mode::in)->good());
  factory_->CreateRWAccess("sub/z", Mode::out);
  EXPECT_EQ(taken(),
            "6 CreateReadAccess key:./sub/y|6 CreateWriteAccess key:./none "
            "|6 CreateRWAccess ./sub/z ");
  EXPECT_TRUE(std::filesystem::exists("sub/y") && std::filesystem::exists("sub/z"));
  EXPECT_FALSE(RecoverFileProxy("a") || ResetFileProxy("a"));
}

TEST_F(FileProxyTest, ModeIsThatOfTheStream) {
  struct Case {
    Mode mode;
    const char *missing, *existing;  // the state and the content then
  };
  const std::vector<Case> cases = {
      {Mode::in, "f@-1", "g@0 abc"},
      {Mode::in | Mode{0xC0}, "f@-1", "g@0 abc"},
      {Mode::in | Mode::ate, "f@-1", "g@3 abc"},
      {Mode::out, "g@0 made", "g@0 "},
      {kInOut, "f@-1", "g@0 abc"},
      {kInOut | Mode::trunc, "g@0 made", "g@0 "},
      {Mode::app, "g@0 made", "g@3 abc"},
      {Mode::in | Mode::trunc, "f@-1", "f@3 abc"},
      {Mode{}, "f@-1", "f@3 abc"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(static_cast<int>(c.mode));
    std::filesystem::remove("k");
    const std::string missing = State(*factory_->CreateRWAccess("k", c.mode));
    EXPECT_EQ(missing + (std::filesystem::exists("k") ? " made" : ""), c.missing);
    const std::string existing = State(*Open("abc", c.mode));
    EXPECT_EQ(existing + " " + ReadFile("k"), c.existing);
  }
}

TEST_F(FileProxyTest, KeysThatAreNoFilesAndFilesThatGoTellItByTheirFlags) {
  WriteConfig(true, 1000, 0);
  ASSERT_EQ(::mkfifo("fifo", 0600), 0);
  Walk(*factory_->CreateRWAccess("fifo", kInOut),
       "clear = g@-1 | size = 4294967295 f@-1 | write a = 0 f@-1 | read 1 = 0: f@-1");
  Walk(*factory_->CreateRWAccess("none/k", Mode::out), "look = f@-1");
  EXPECT_TRUE(factory_->CreateRWAccess(".", kInOut)->fail());
  std::filesystem::create_symlink("k", "link");
  WriteConfig(false, 0, 0);
  WriteFile("k", "abc");
  const auto link = factory_->CreateRWAccess("link", kInOut);
  std::filesystem::remove("k");
  Walk(*link,
       "write d = 1 g@1 | read 2 = 2:bc g@3 | fsync = g@3 | peek = -1 e@3 | read 1 = 0: ef@-1");
  WriteFile("k", "");
  std::filesystem::resize_file("k", (std::uintmax_t{1} << 32) + 10);
  Walk(*link, "clear = g@4294967306");
  Walk(*factory_->CreateRWAccess("k", kInOut), "size = 10 g@0 | end -2 = g@4294967304");
}

TEST_F(FileProxyTest, WriteToAFullDiskIsNoChangeAndHoldsNoLock) {
  const auto full = CreateFileAccessorFactory("/dev")->CreateRWAccess("full", kInOut);
  EXPECT_EQ(full->write(std::string(100000, 'a').data(), 100000), 0);
  Walk(*full, "fsync = fb@0");
  EXPECT_THAT(TakeText(kAccessorFile, "ReadWriteAccessorImpl::", "@"),
              EndsWith("|2 @init stream is bad|6 @fsync end."));
  Walk(*Open("abc"), "write d = 1 g@1");
}

TEST_F(FileProxyTest, OneAccessorOfTheProcessWritesAtATime) {
  const auto one = factory_->CreateRWAccess("one", Mode::out);
  const auto two = factory_->CreateRWAccess("two", Mode::out);
  std::atomic<pid_t> writer = 0;
  std::atomic<bool> written = false;
  std::future<void> second;
  ara::log::SetSink([&](auto, auto, std::string_view line) {
    if (line.find("write len=1 :1") == std::string_view::npos) {
      return;
    }
    second = std::async(std::launch::async, [&] {
      writer = ::gettid();
      two->write("2", 1);
      written = true;
    });
    EXPECT_TRUE(WaitUntil([&] {  // until it waits for its turn
      const std::string stat = "/proc/self/task/" + std::to_string(writer) + "/stat";
      return written || ReadFile(stat).find(") S ") != std::string::npos;
    }));
    EXPECT_FALSE(written);
  });
  one->write("1", 1);
  second.wait();
  ara::log::SetSink({});
}

using FileProxyDeathTest = FileProxyTest;

TEST_F(FileProxyDeathTest, PositionsForReadingAndWritingMustAgreeAtOpening) {
  EXPECT_DEATH((drift = 1, Open("abc")), "stream.tellg\\(\\) == stream.tellp\\(\\)");
}

}  // namespace
}  // namespace ara::per::testing
