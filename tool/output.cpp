// SPDX-License-Identifier: MIT
//
// Output and OutputFile; the C library's files are used because they are the same on every system.
#include "tool/output.h"

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <iterator>
#include <system_error>
#include <utility>

#include "tool/file_names.h"
#include "tool/status.h"

#if defined(_WIN32)
#include <fcntl.h>
#include <io.h>
#include <process.h>
#define fileno _fileno
#define getpid _getpid
#define isatty _isatty
#else
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#endif

namespace qps {
namespace {

namespace fs = std::filesystem;

// The temporary file that stands on the disk, for the handler of signals; "" when there is none.
char currentTemporary[4096];

void remember(const std::string& name) {
  if (name.size() < sizeof currentTemporary) name.copy(currentTemporary, name.size());
  currentTemporary[name.size() < sizeof currentTemporary ? name.size() : 0] = '\0';
}

constexpr std::string_view kTemporaryPrefix = ".qps-";
constexpr std::string_view kTemporarySuffix = ".tmp";

// Another process may be writing to the same folder, and a name may have been left by a process
// that was killed: the number goes up until the name is free. No name comes twice, for another
// process may be about to remove the file that had it.
fs::path temporaryName(const fs::path& folder) {
  static unsigned number = 0;
  return folder / (std::string(kTemporaryPrefix) + std::to_string(getpid()) + "-" +
                   std::to_string(number++) + std::string(kTemporarySuffix));
}

// A lock tells others that the file is in use; it goes away with the process. False when one who
// takes it for a leftover was faster. Windows removes no file that is open anyway.
bool lock([[maybe_unused]] std::FILE* file, [[maybe_unused]] const fs::path& path) {
#if defined(_WIN32)
  return true;
#else
  struct stat status {};
  if (flock(fileno(file), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) return false;
  return stat(path.c_str(), &status) == 0;
#endif
}

std::FILE* createTemporary(const fs::path& folder, fs::path& path) {
  bool folderMade = false;
  for (;;) {
    path = temporaryName(folder);
    remember(fileNameOf(path));
    errno = 0;
    if (std::FILE* const file = createFile(path)) {
      if (lock(file, path)) return file;
      std::fclose(file);
    } else if (errno == ENOENT && !folderMade) {
      std::error_code error;
      fs::create_directories(folder, error);
      if (error) throw WriteError{error.value()};
      folderMade = true;
    } else if (errno != EEXIST) {
      throw WriteError{errno};
    }
  }
}

// Keeps a file's lock after the file was closed, until it has its own name: without the lock
// another process would take it for a leftover.
class KeptLock {
 public:
#if defined(_WIN32)
  explicit KeptLock(std::FILE* /*file*/) {}
#else
  explicit KeptLock(std::FILE* file) : descriptor_(dup(fileno(file))) {}
  ~KeptLock() {
    close(descriptor_);
  }
#endif
  KeptLock(const KeptLock&) = delete;
  KeptLock& operator=(const KeptLock&) = delete;

#if !defined(_WIN32)
 private:
  int descriptor_;
#endif
};

void removeIfLeft(const fs::path& path) {
#if !defined(_WIN32)
  const int file = open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
  if (file < 0) return;
  const bool inUse = flock(file, LOCK_EX | LOCK_NB) != 0;
  if (!inUse) unlink(path.c_str());
  close(file);
#else
  std::error_code ignored;
  fs::remove(path, ignored);
#endif
}

bool sameBytes(const fs::path& a, const fs::path& b) {
  std::error_code error;
  if (!fs::is_regular_file(fs::symlink_status(b, error))) return false;
  std::ifstream first(a, std::ios::binary), second(b, std::ios::binary);
  if (!first || !second) return false;
  using Bytes = std::istreambuf_iterator<char>;
  return std::equal(Bytes(first), Bytes(), Bytes(second), Bytes());
}

#if !defined(_WIN32)
extern "C" void removeTemporaryAndEnd(int number) {
  if (currentTemporary[0] != '\0') unlink(currentTemporary);
  signal(number, SIG_DFL);
  raise(number);  // once the handler has returned
}
#endif

}  // namespace

std::string WriteError::message() const {
  return std::generic_category().message(error);
}

Output::Output(std::FILE* file) : file_(file), terminal_(isatty(fileno(file)) != 0) {
  std::setvbuf(file, nullptr, _IONBF, 0);
#if defined(_WIN32)
  _setmode(_fileno(file), _O_BINARY);
#endif
}

Output::Output(const Output& real, std::uint64_t most)
    : file_(nullptr), terminal_(real.terminal_), bytesLeft_(most) {}

void Output::flush() {
  const auto size = static_cast<std::size_t>(cursor_ - block_.get());
  cursor_ = block_.get();
  if (file_ == nullptr) {
    if (size > bytesLeft_)
      throw Failure{Status::kLimit, "the limit of output was reached (--max-output)"};
    bytesLeft_ -= size;
    return;
  }
  errno = 0;
  if (size > 0 && std::fwrite(block_.get(), 1, size, file_) != size) throw WriteError{errno};
}

bool ignoresCase(const fs::path& folder) {
  fs::path probe;
  std::FILE* const file = createTemporary(folder, probe);
  std::string other = fileNameOf(probe.filename());
  other.replace(1, 3, "QPS");
  std::error_code ignored;
  const bool same = fs::exists(folder / other, ignored);
  std::fclose(file);
  fs::remove(probe, ignored);
  remember("");
  return same;
}

void removeLeftovers(const fs::path& folder) {
  std::error_code error;
  for (fs::directory_iterator entry(folder, error), end; !error && entry != end;
       entry.increment(error)) {
    const std::string name = fileNameOf(entry->path().filename());
    if (name.starts_with(kTemporaryPrefix) && name.ends_with(kTemporarySuffix))
      removeIfLeft(entry->path());
  }
}

void cleanUpOnSignals() {
#if !defined(_WIN32)
  for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
    if (signal(number, removeTemporaryAndEnd) == SIG_IGN) signal(number, SIG_IGN);  // as nohup does
  }
#endif
}

OutputFile::OutputFile(const fs::path& folder, const std::string& name)
    : target_(folder / filePathOf(name)),
      file_(createTemporary(target_.parent_path(), temporary_)),
      out_(file_) {}

OutputFile::~OutputFile() {
  if (file_ != nullptr) std::fclose(file_);
  std::error_code ignored;
  if (!temporary_.empty()) fs::remove(temporary_, ignored);
  remember("");
}

bool OutputFile::finish(bool overwrite) {
  out_.flush();
  const KeptLock kept(file_);
  errno = 0;
  if (std::fclose(std::exchange(file_, nullptr)) != 0) throw WriteError{errno};
  std::error_code error;
  if (!overwrite) {
    // A second name can only be one that is free. Some disks have no second names: there, a file
    // that another process makes at this moment would be replaced.
    fs::create_hard_link(temporary_, target_, error);
    if (!error) return true;
    if (fs::exists(fs::symlink_status(target_, error))) return sameBytes(temporary_, target_);
  }
  fs::rename(temporary_, target_, error);
  if (error) throw WriteError{error.value()};
  temporary_.clear();
  return true;
}

}  // namespace qps
