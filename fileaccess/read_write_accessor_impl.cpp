#include "fileaccess/read_write_accessor_impl.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cassert>
#include <cstdint>
#include <filesystem>
#include <limits>
#include <mutex>
#include <system_error>

#include "crc/crc.h"
#include "fileaccess/file_size.h"
#include "fileaccess/std_ios_base_adapter.h"
#include "support/current_path.h"
#include "support/log_here.h"

namespace ara::per {
namespace {

using ara::log::LogLevel;
using helper::ios_base_adapter;

constexpr char kRedundantFile[] = ARA_PER_REDUNDANT_DIR "/fileProxy.json";

constexpr DatabaseConfig kDefaultConfig = {false, 0, 0, kUpdateTimeWithoutFile};

// One `write` of an accessor of the process at a time.
std::mutex mFileLock;

/// A position as `%d` shows it.
int Loggable(std::streamoff position) { return static_cast<int>(position); }

/// Positions and sizes are compared in 32 bits.
std::uint32_t LowBits(std::streamoff position) { return static_cast<std::uint32_t>(position); }

bool HasSize(const std::string& path) {
  std::error_code ignored;
  const std::uintmax_t size = std::filesystem::file_size(path, ignored);
  return !ignored && size != 0;
}

}  // namespace

ReadWriteAccessorImpl::ReadWriteAccessorImpl(const std::string& path,
                                             const BasicOperations::OpenMode& mode)
    : filename(path),
      stream(path, ios_base_adapter::ToOpenmode(mode)),
      pos(stream.tellg()),
      log_(LogExtend::getLogExtenObject("PersistencyService")),
      hasSize_(stream.is_open() && HasSize(path)) {
  // Intended: it ends the process, in every kind of build.
  assert(stream.tellg() == stream.tellp());
  // See the fields: who lets go of `alive_` last fulfils the promise.
  auto ended = std::make_shared<std::promise<void>>();
  ended_ = ended->get_future();
  alive_ = std::shared_ptr<const void>(this, [ended](const void*) { ended->set_value(); });
  configPath = getTheCurrentPath() + kConfigFile;
  log_->logPrint(LogLevel::kVerbose, ARA_PER_HERE, "configPath=%s pos=%d, filename=%s",
                 configPath.c_str(), Loggable(pos), filename.c_str());
  init(configPath);
  if (config_.isRedundancy && !checkSum()) {
    recover(mode);
  }
  if (stream.good()) {
    log_->logPrint(LogLevel::kVerbose,
                   ARA_PER_LINE("ReadWriteAccessorImpl::ReadWriteAccessorImpl base data is good"));
    if (config_.updateTime != 0) {
      timer.clearStopped();
    }
  }
}

ReadWriteAccessorImpl::~ReadWriteAccessorImpl() {
  // Intended: nothing is synchronised, and every other delay of the process is silenced, too.
  timer.stop();
  alive_.reset();
  ended_.wait();
  stream.close();
}

void ReadWriteAccessorImpl::init(const std::string& path) {
  ManifestHelper manifest;
  if (::access(path.c_str(), F_OK) == 0 && manifest.initInfo(path, ConfigKind::kDataConfig)) {
    // Intended: 0 for the delay when the file does not parse, where a database does the same.
    manifest.getDatabaseConfig(config_);
  } else {
    // Intended: also for a file that is refused, where a database has 6000 ms for its delay.
    config_ = kDefaultConfig;
  }
}

std::string ReadWriteAccessorImpl::getTheCurrentPath() { return CurrentPath<80>(); }

void ReadWriteAccessorImpl::recover(const BasicOperations::OpenMode& mode) {
  stream.clear();
  // Intended: with the caller's mode, which may empty the copy.
  std::fstream redundant(kRedundantFile, ios_base_adapter::ToOpenmode(mode));
  // Intended: behind what the file holds, which is not emptied; the position stays.
  stream << redundant.rdbuf();
  redundant.close();
  if (stream.good()) {
    log_->logPrint(LogLevel::kVerbose,
                   ARA_PER_LINE("ReadWriteAccessorImpl::ReadWriteAccessorImpl save redundancy data "
                                "to base success"));
    fsync();  // Intended: recovering is no change, so that nothing is synchronised
  } else {
    log_->logPrint(
        LogLevel::kError,
        ARA_PER_LINE(
            "ReadWriteAccessorImpl::ReadWriteAccessorImpl save redundancy data to base fail"));
  }
}

unsigned int ReadWriteAccessorImpl::calculateChecksum() {
  stream.seekg(0, std::ios_base::end);
  const std::uint32_t size = SizeByEnd(stream.tellg());
  unsigned int sum = 0;
  if (size != 0) {
    // Intended: `read` starts at the position. From behind the front it comes up short, which
    // leaves the stream in a failed state, and what it did not read counts as zeros.
    const auto bytes = std::make_unique<char[]>(size);
    read(bytes.get(), size);
    sum = crc::CRC::do_crc32(reinterpret_cast<const unsigned char*>(bytes.get()), size);
  }
  stream.seekg(pos);
  log_->logPrint(LogLevel::kVerbose, ARA_PER_HERE,
                 "ReadWriteAccessorImpl::calculateChecksum checkSum: %d", static_cast<int>(sum));
  return sum;
}

bool ReadWriteAccessorImpl::checkSum() {
  const unsigned int sum = calculateChecksum();
  log_->logPrint(LogLevel::kVerbose, ARA_PER_HERE,
                 "ReadWriteAccessorImpl::checkSum config_.checksum:%d ",
                 static_cast<int>(config_.checksum));
  if (config_.checksum != 0 && config_.checksum != sum) {
    return false;
  }
  config_.checksum = sum;
  return true;
}

bool ReadWriteAccessorImpl::updateChecksum(unsigned int sum) {
  // Intended: into the data file and not into the configuration, which keeps its checksum.
  const bool isSaved = ManifestHelper().saveConfigInfo(filename, sum);
  if (!isSaved) {
    // Intended: the text names another function.
    log_->logPrint(LogLevel::kVerbose,
                   ARA_PER_LINE("ReadWriteAccessorImpl::calculateChecksum save checksum failed"));
  }
  return isSaved;
}

void ReadWriteAccessorImpl::onTimer(void* data) {
  if (auto* const accessor = TimerData::as<ReadWriteAccessorImpl>(data)) {
    accessor->fsync();
  }
}

std::streampos ReadWriteAccessorImpl::tell() {
  if (!stream.eof() && pos != std::streampos(-1)) {
    return pos;
  }
  std::ifstream file(filename, std::ios_base::in | std::ios_base::binary | std::ios_base::ate);
  return file.fail() ? pos : file.tellg();
}

void ReadWriteAccessorImpl::seek(std::streampos position) { pos = position; }

void ReadWriteAccessorImpl::seek(long offset, SeekDirection direction) {
  const std::ios_base::seekdir stdDirection = ios_base_adapter::ToSeekdir(direction);
  stream.seekp(pos);
  stream.seekp(offset, stdDirection);
  pos = stream.tellp();
}

long ReadWriteAccessorImpl::read(char* buf, unsigned long n) {
  if (buf == nullptr || n == 0) {
    return -1;
  }
  const std::streamoff start = pos;
  // There every file can be moved to, unless what was written does not fit, and the position be
  // counted, which saves a system call each.
  const bool isNear = hasSize_ && 0 <= start && start <= std::numeric_limits<std::int32_t>::max();
  std::uint32_t size = 0;
  if (isNear) {
    stream.clear(stream.rdstate() & ~std::ios_base::eofbit);
    size = measure(0);  // goes there, too
  } else {
    stream.seekg(pos);
    size = fileSize();
  }
  stream.read(buf, static_cast<std::streamsize>(n));
  pos = isNear && stream.good() ? std::streampos(start + stream.gcount()) : stream.tellg();
  // Intended: not what the stream has counted.
  const std::uint32_t end = stream.eof() ? size : LowBits(pos);
  const auto length = static_cast<std::int32_t>(end - LowBits(start));
  log_->logPrint(LogLevel::kVerbose, ARA_PER_HERE, "ReadWriteAccessorImpl::read len is %d", length);
  return length;
}

ReadAccessor& ReadWriteAccessorImpl::getline(std::string& s, char delim) {
  stream.seekg(pos);
  std::getline(stream, s, delim);
  pos = stream.tellg();
  log_->logPrint(LogLevel::kVerbose, ARA_PER_HERE, "ReadWriteAccessorImpl::getline string:%s ",
                 s.c_str());
  return *this;
}

ReadAccessor& ReadWriteAccessorImpl::operator>>(std::string& s) {
  stream.seekg(pos);
  stream >> s;
  pos = stream.tellg();
  log_->logPrint(LogLevel::kVerbose, ARA_PER_HERE, "ReadWriteAccessorImpl::operator>> string:%s ",
                 s.c_str());
  return *this;
}

std::uint32_t ReadWriteAccessorImpl::fileSize() { return measure(LowBits(-1)); }

std::uint32_t ReadWriteAccessorImpl::measure(std::uint32_t unseekable) {
  std::uint32_t size = 0;
  if (stream.good()) {
    const std::streamoff end = stream.rdbuf()->pubseekoff(0, std::ios_base::end);
    size = LowBits(end);
    if (end < 0) {
      stream.setstate(std::ios_base::failbit);
      size = unseekable;
    }
    stream.seekg(pos, std::ios_base::beg);
  }
  log_->logPrint(LogLevel::kVerbose, ARA_PER_HERE, "ReadWriteAccessorImpl::fileSize = %d, pos=%d",
                 static_cast<int>(size), Loggable(pos));
  return size;
}

long ReadWriteAccessorImpl::write(const char* buf, unsigned long n) {
  if (buf == nullptr || n == 0) {
    return -1;
  }
  std::unique_lock<std::mutex> lock(mFileLock);
  const std::streampos start = pos;
  if (!writeLocked(buf, n)) {
    return 0;
  }
  armTimer();
  lock.unlock();
  const long length = pos - start;
  log_->logPrint(LogLevel::kVerbose, ARA_PER_HERE, "ReadWriteAccessorImpl::write end.%d",
                 static_cast<int>(length));
  return length;
}

bool ReadWriteAccessorImpl::writeLocked(const char* buf, unsigned long n) {
  // The buffer need not end with a zero byte; what is longer than a line does not show anyway.
  constexpr unsigned long kLongestText = 1024;
  log_->logPrint(LogLevel::kVerbose, ARA_PER_HERE, "write len=%d :%.*s, pos=%d",
                 static_cast<int>(n), static_cast<int>(std::min(n, kLongestText)), buf,
                 Loggable(pos));
  stream.seekp(pos);
  stream.write(buf, static_cast<std::streamsize>(n));
  pos = stream.tellp();
  if (stream.bad()) {
    // Intended: the text names another function.
    log_->logPrint(LogLevel::kError, ARA_PER_LINE("ReadWriteAccessorImpl::init stream is bad"));
    return false;
  }
  dataChanged = true;  // Intended: also in a failed state, in which nothing was written
  return true;
}

void ReadWriteAccessorImpl::armTimer() {
  if (!timerArmed && config_.updateTime != 0) {
    // Intended: a delay above 2147483647 becomes negative, and the call comes at once. One that
    // comes before the flag is set leaves it set for good.
    timer.setTimeout(&ReadWriteAccessorImpl::onTimer, static_cast<TimerData*>(this),
                     static_cast<int>(config_.updateTime), alive_);
    timerArmed = true;
  }
}

WriteAccessor& ReadWriteAccessorImpl::operator<<(const std::string& s) {
  // Intended: no lock, no change for `fsync` and no timer.
  stream.seekp(pos);
  stream << s;
  pos = stream.tellp();
  log_->logPrint(LogLevel::kVerbose, ARA_PER_HERE, "ReadWriteAccessorImpl::operator<< %s ",
                 s.c_str());
  return *this;
}

WriteAccessor& ReadWriteAccessorImpl::operator<<(WriteAccessor& (*manip)(WriteAccessor&)) {
  manip(*this);
  return *this;
}

void ReadWriteAccessorImpl::fsync() {
  if (dataChanged) {
    flush();
    dataChanged = false;
    stream.seekg(0, std::ios_base::end);
    const std::uint32_t dataSize = LowBits(stream.tellg());
    log_->logPrint(LogLevel::kVerbose, ARA_PER_HERE, "ReadWriteAccessorImpl::fsync dataSize is:%d ",
                   static_cast<int>(dataSize));
    if (config_.isRedundancy) {
      if (config_.maxSize <= dataSize) {
        log_->logPrint(LogLevel::kVerbose,
                       ARA_PER_LINE("ReadWriteAccessorImpl::fsync the file is max size, it can not "
                                    "to storage the data."));
        return;  // Intended: timerArmed stays set, so that no later write arms the timer
      }
      config_.checksum = calculateChecksum();
      log_->logPrint(LogLevel::kVerbose, ARA_PER_HERE,
                     "ReadWriteAccessorImpl::fsync config_.chechSum is:%d",
                     static_cast<int>(config_.checksum));
      updateChecksum(config_.checksum);
    }
    // Intended: no failure is looked at, and the descriptor stays open for the life of the process.
    static_cast<void>(::fdatasync(::open(filename.c_str(), O_APPEND)));
    timerArmed = false;
    timer.stop();
  }
  log_->logPrint(LogLevel::kVerbose, ARA_PER_LINE("ReadWriteAccessorImpl::fsync end."));
}

}  // namespace ara::per
