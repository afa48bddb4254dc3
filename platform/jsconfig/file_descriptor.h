#ifndef PLATFORM_JSCONFIG_FILE_DESCRIPTOR_H_
#define PLATFORM_JSCONFIG_FILE_DESCRIPTOR_H_

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <system_error>
#include <utility>

namespace jsconfig {

/// Owner of an open file.
class FileDescriptor {
 public:
  FileDescriptor(const std::string& path, int flags)
      : fd_(::open(path.c_str(), flags | O_CLOEXEC, 0666)) {}
  ~FileDescriptor() { static_cast<void>(Close()); }
  FileDescriptor(const FileDescriptor&) = delete;
  FileDescriptor& operator=(const FileDescriptor&) = delete;

  /// -1, with the reason in errno, if the file could not be opened.
  int Get() const { return fd_; }

  /// @return false, with the reason in errno, if closing told of a failure to write
  bool Close() {
    const int fd = std::exchange(fd_, -1);
    return fd == -1 || ::close(fd) == 0;
  }

 private:
  int fd_;
};

/// "<what> <path>: <reason in errno>"
inline std::string DescribeSystemError(const char* what, const std::string& path) {
  const int error = errno;
  return std::string(what) + " " + path + ": " + std::generic_category().message(error);
}

}  // namespace jsconfig

#endif  // PLATFORM_JSCONFIG_FILE_DESCRIPTOR_H_
