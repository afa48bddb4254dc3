#ifndef FILEACCESS_READ_WRITE_ACCESSOR_IMPL_H_
#define FILEACCESS_READ_WRITE_ACCESSOR_IMPL_H_

#include <fstream>
#include <future>
#include <memory>
#include <string>

#include "ara/per/log_extend.h"
#include "ara/per/read_write_accessor.h"
#include "manifestaccess/manifest_helper.h"
#include "support/timercpp.h"

namespace ara::per {

/// The one accessor: a file stream beside a position, which every operation but `peek` and `get`
/// sets before and takes back behind its work, with a checksum and a delayed synchronisation.
///
/// Not guarded but in `write`: the stream, the position and the flags are used by the application's
/// thread and, during a delayed synchronisation, by the timer's.
class ReadWriteAccessorImpl final : public ReadWriteAccessor, public TimerData {
 public:
  /// Never throws for a file that cannot be opened: the accessor is in a failed state then.
  ReadWriteAccessorImpl(const std::string& path, const BasicOperations::OpenMode& mode);

  /// Closes the file and synchronises nothing. Waits for a delayed synchronisation that runs.
  ~ReadWriteAccessorImpl() override;

  std::streampos tell() override;
  void seek(std::streampos position) override;
  void seek(long offset, SeekDirection direction) override;
  bool good() const override { return stream.good(); }
  bool eof() const override { return stream.eof(); }
  bool fail() const override { return stream.fail(); }
  bool bad() const override { return stream.bad(); }
  bool operator!() const override { return stream.fail(); }
  explicit operator bool() const override { return !stream.fail(); }
  void clear() override { stream.clear(); }

  int peek() override { return stream.peek(); }
  int get() override { return stream.get(); }
  long read(char* buf, unsigned long n) override;
  ReadAccessor& getline(std::string& s, char delim) override;
  ReadAccessor& operator>>(std::string& s) override;
  std::uint32_t fileSize() override;

  void fsync() override;
  long write(const char* buf, unsigned long n) override;
  WriteAccessor& operator<<(const std::string& s) override;
  WriteAccessor& operator<<(WriteAccessor& (*manip)(WriteAccessor&)) override;
  void flush() override { stream.flush(); }

  void init(const std::string& path);
  static std::string getTheCurrentPath();
  unsigned int calculateChecksum();
  bool checkSum();
  bool updateChecksum(unsigned int sum);
  /// Does nothing for data of a database.
  static void onTimer(void* data);

 private:
  /// `fileSize`, which is `unseekable` when the stream cannot be moved.
  std::uint32_t measure(std::uint32_t unseekable);
  void recover(const BasicOperations::OpenMode& mode);
  bool writeLocked(const char* buf, unsigned long n);
  void armTimer();

  std::string filename;
  std::fstream stream;
  std::streampos pos;
  bool dataChanged = false;
  bool timerArmed = false;
  DatabaseConfig config_;
  Timer timer;
  std::string configPath;
  LogExtend* log_;

  // Whether it is a regular file that had content when it was opened. Others may refuse a position,
  // or report one that reading has not come to.
  const bool hasSize_;

  // A delayed synchronisation holds `alive_` while it runs; `ended_` is there when nobody does.
  std::shared_ptr<const void> alive_;
  std::future<void> ended_;
};

}  // namespace ara::per

#endif  // FILEACCESS_READ_WRITE_ACCESSOR_IMPL_H_
