#include "base/file_io.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <vector>

#include "base/text.h"

namespace kobubase {
namespace {

int failure() {
  return errno ? errno : EIO;
}

// Opens without waiting on a FIFO, then keeps the descriptor only for a regular file.
int openRegular(const std::string& path, int flags, std::string& error) {
  const int fd = ::open(path.c_str(), flags | O_NONBLOCK | O_CLOEXEC, 0644);
  if (fd < 0) {
    error = errorLine(failure());
    return -1;
  }
  struct stat info {};
  if (::fstat(fd, &info) != 0 || !S_ISREG(info.st_mode)) {
    ::close(fd);
    error = S_ISDIR(info.st_mode) ? errorLine(EISDIR) : notRegularLine(path);
    return -1;
  }
  ::fcntl(fd, F_SETFL, ::fcntl(fd, F_GETFL) & ~O_NONBLOCK);
  return fd;
}

std::FILE* openStream(const std::string& path, int flags, const char* mode, std::string& error) {
  const int fd = openRegular(path, flags, error);
  if (fd < 0) return nullptr;
  std::FILE* file = ::fdopen(fd, mode);
  if (file == nullptr) {
    error = errorLine(failure());
    ::close(fd);
  }
  return file;
}

// The file a save replaces: links are followed so that the link itself stays.
std::string replacedFile(const std::string& path) {
  std::error_code ec;
  if (std::filesystem::is_symlink(path, ec)) {
    const std::filesystem::path target = std::filesystem::weakly_canonical(path, ec);
    if (!ec) return target.string();
  }
  return path;
}

// Best effort: makes the rename itself survive a crash.
void syncFolder(const std::string& path) {
  std::filesystem::path folder = std::filesystem::path(path).parent_path();
  if (folder.empty()) folder = std::filesystem::path(".");
  const int fd = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (fd < 0) return;
  ::fsync(fd);
  ::close(fd);
}

// Fills, flushes and syncs the temporary file; 0 or the first error.
int fillAndSync(std::FILE* file, const FileFiller& fill) {
  errno = 0;
  int result = fill(file);
  if (result == 0 && std::fflush(file) != 0) result = failure();
  if (result == 0 && ::fsync(::fileno(file)) != 0) result = failure();
  if (std::fclose(file) != 0 && result == 0) result = failure();
  return result;
}

}  // namespace

std::string notRegularLine(const std::string& path) {
  return "# error: " + path + " is not a regular file";
}

std::FILE* openForReading(const std::string& path, std::string& error) {
  return openStream(path, O_RDONLY, "rb", error);
}

std::FILE* openForAppending(const std::string& path, std::string& error) {
  return openStream(path, O_WRONLY | O_APPEND | O_CREAT, "ab", error);
}

bool readWholeFile(const std::string& path, std::string& text, std::string& error, std::uint64_t limit) {
  text.clear();
  const int fd = openRegular(path, O_RDONLY, error);
  if (fd < 0) return false;
  struct stat info {};
  ::fstat(fd, &info);
  bool ok = static_cast<std::uint64_t>(info.st_size) <= limit;
  std::vector<char> chunk(1 << 16);
  while (ok) {
    const ssize_t n = ::read(fd, chunk.data(), chunk.size());
    if (n < 0 && errno == EINTR) continue;
    if (n < 0) {
      error = errorLine(failure());
      ::close(fd);
      return false;
    }
    if (n == 0) break;
    text.append(chunk.data(), static_cast<std::size_t>(n));
    ok = text.size() <= limit;  // a file that grows while read
  }
  ::close(fd);
  if (!ok) {
    text.clear();
    error = "# error: ";
    error += path;
    error += " is larger than " + std::to_string(limit >> 20) + " MiB";
  }
  return ok;
}

bool writeFileAtomically(const std::string& path, const FileFiller& fill, std::string& error) {
  const std::string target = replacedFile(path);
  struct stat info {};
  const bool exists = ::stat(target.c_str(), &info) == 0;
  if (exists && !S_ISREG(info.st_mode)) {
    error = notRegularLine(path);
    return false;
  }
  if (exists && ::access(target.c_str(), W_OK) != 0) {  // a read-only file is not replaced either
    error = errorLine(failure());
    return false;
  }
  std::string temporary = target + ".XXXXXX";
  const int fd = ::mkostemp(temporary.data(), O_CLOEXEC);
  if (fd < 0) {
    error = errorLine(failure());
    return false;
  }
  ::fchmod(fd, exists ? (info.st_mode & 07777) : 0644);
  std::FILE* file = ::fdopen(fd, "wb+");
  if (file == nullptr) ::close(fd);
  int result = file == nullptr ? failure() : fillAndSync(file, fill);
  if (result == 0 && std::rename(temporary.c_str(), target.c_str()) != 0) result = failure();
  if (result != 0) {
    ::unlink(temporary.c_str());
    error = errorLine(result);
    return false;
  }
  syncFolder(target);
  return true;
}

bool writeFileAtomically(const std::string& path, std::string_view bytes, std::string& error) {
  return writeFileAtomically(
      path,
      [bytes](std::FILE* file) {
        return std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size() ? 0 : (errno ? errno : EIO);
      },
      error);
}

}  // namespace kobubase
