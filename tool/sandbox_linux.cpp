// SPDX-License-Identifier: MIT
//
// seccomp by libseccomp, where the build found it, and Landlock by its system calls, for which the
// C library has no functions.
#include "tool/sandbox.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstdint>
#include <memory>

#if defined(QPS_SECCOMP)
#include <seccomp.h>
#include <sys/ioctl.h>
#include <sys/mman.h>

#include <cerrno>
#endif

#if __has_include(<linux/landlock.h>)
#include <linux/landlock.h>
#define QPS_LANDLOCK
#endif

namespace qps {
namespace {

#if defined(QPS_SECCOMP)

// What reading notebooks, memory, writing to what is open and going away take.
constexpr int kAllowed[] = {
    SCMP_SYS(access),
    SCMP_SYS(brk),
    SCMP_SYS(clock_gettime),
    SCMP_SYS(close),
    SCMP_SYS(exit),
    SCMP_SYS(exit_group),
    SCMP_SYS(faccessat),
    SCMP_SYS(faccessat2),
    SCMP_SYS(fstat),
    SCMP_SYS(fstat64),
    SCMP_SYS(fstatat64),
    SCMP_SYS(futex),
    SCMP_SYS(getcwd),
    SCMP_SYS(getpid),
    SCMP_SYS(getrandom),
    SCMP_SYS(gettid),
    SCMP_SYS(gettimeofday),
    SCMP_SYS(_llseek),
    SCMP_SYS(lseek),
    SCMP_SYS(lstat),
    SCMP_SYS(lstat64),
    SCMP_SYS(madvise),
    SCMP_SYS(mremap),
    SCMP_SYS(munmap),
    SCMP_SYS(newfstatat),
    SCMP_SYS(pread64),
    SCMP_SYS(read),
    SCMP_SYS(readlink),
    SCMP_SYS(readlinkat),
    SCMP_SYS(readv),
    SCMP_SYS(restart_syscall),
    SCMP_SYS(rt_sigaction),
    SCMP_SYS(rt_sigprocmask),
    SCMP_SYS(rt_sigreturn),
    SCMP_SYS(sigreturn),
    SCMP_SYS(stat),
    SCMP_SYS(stat64),
    SCMP_SYS(statx),
    SCMP_SYS(sysinfo),
    SCMP_SYS(time),
    SCMP_SYS(write),
    SCMP_SYS(writev),
    SCMP_SYS(clock_gettime64),
    SCMP_SYS(futex_time64),
};

// What files in a folder of output take besides.
constexpr int kAllowedForFolder[] = {
    SCMP_SYS(open),     SCMP_SYS(openat),   SCMP_SYS(mkdir),      SCMP_SYS(mkdirat),
    SCMP_SYS(rename),   SCMP_SYS(renameat), SCMP_SYS(renameat2),  SCMP_SYS(unlink),
    SCMP_SYS(unlinkat), SCMP_SYS(flock),    SCMP_SYS(getdents64), SCMP_SYS(link),
    SCMP_SYS(linkat),   SCMP_SYS(dup),
};

struct Release {
  void operator()(void* filter) const { seccomp_release(filter); }
};

class Filter {
 public:
  Filter() : context_(seccomp_init(SCMP_ACT_ERRNO(EPERM))) {}

  void allow(int call) { keep(seccomp_rule_add(context_.get(), SCMP_ACT_ALLOW, call, 0)); }
  void allowWhere(int call, const scmp_arg_cmp& argument) {
    keep(seccomp_rule_add_array(context_.get(), SCMP_ACT_ALLOW, call, 1, &argument));
  }

  bool load() { return good_ && context_ != nullptr && seccomp_load(context_.get()) == 0; }

 private:
  void keep(int result) { good_ = good_ && result == 0; }

  std::unique_ptr<void, Release> context_;
  bool good_ = true;
};

constexpr scmp_arg_cmp withoutBits(unsigned argument, std::uint64_t bits) {
  return {argument, SCMP_CMP_MASKED_EQ, bits, 0};
}

constexpr scmp_arg_cmp equalTo(unsigned argument, std::uint64_t value) {
  return {argument, SCMP_CMP_EQ, value, 0};
}

bool limitSystemCalls(bool writesFiles) {
  Filter filter;
  for (const int call : kAllowed)
    filter.allow(call);
  for (const int call : {SCMP_SYS(mmap), SCMP_SYS(mmap2), SCMP_SYS(mprotect)})
    filter.allowWhere(call, withoutBits(2, PROT_EXEC));
  filter.allowWhere(SCMP_SYS(ioctl), equalTo(1, TCGETS));                                 // isatty
  filter.allowWhere(SCMP_SYS(tgkill), equalTo(0, static_cast<std::uint64_t>(getpid())));  // abort
  if (writesFiles) {
    for (const int call : kAllowedForFolder)
      filter.allow(call);
    for (const int call : {SCMP_SYS(fcntl), SCMP_SYS(fcntl64)})
      for (const int command : {F_GETFL, F_SETFD})  // opendir
        filter.allowWhere(call, equalTo(1, static_cast<std::uint64_t>(command)));
  } else {
    constexpr std::uint64_t kWriting = O_ACCMODE | O_CREAT | O_TRUNC;
    filter.allowWhere(SCMP_SYS(open), withoutBits(1, kWriting));
    filter.allowWhere(SCMP_SYS(openat), withoutBits(2, kWriting));
  }
  return filter.load();
}

#else

bool limitSystemCalls(bool /*writesFiles*/) {
  return false;
}

#endif

#if defined(QPS_LANDLOCK)

class Descriptor {
 public:
  explicit Descriptor(long number) : number_(static_cast<int>(number)) {}
  ~Descriptor() {
    if (number_ >= 0) ::close(number_);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  int number() const { return number_; }
  bool valid() const { return number_ >= 0; }

 private:
  int number_;
};

// Which changes of files there are, as far as the kernel's version of Landlock knows them.
std::uint64_t changesOfFiles(long version) {
  constexpr std::uint64_t kFirstVersion = (std::uint64_t{LANDLOCK_ACCESS_FS_MAKE_SYM} << 1) - 1;
  constexpr std::uint64_t kTruncate = std::uint64_t{1} << 14;  // from the third version on
  constexpr std::uint64_t kReading = LANDLOCK_ACCESS_FS_READ_FILE | LANDLOCK_ACCESS_FS_READ_DIR;
  return (kFirstVersion & ~kReading) | (version >= 3 ? kTruncate : 0);
}

bool limitFiles(const std::string& outputFolder) {
  constexpr std::uint64_t kNotInFolder =
      LANDLOCK_ACCESS_FS_EXECUTE | LANDLOCK_ACCESS_FS_REMOVE_DIR | LANDLOCK_ACCESS_FS_MAKE_CHAR |
      LANDLOCK_ACCESS_FS_MAKE_SOCK | LANDLOCK_ACCESS_FS_MAKE_FIFO | LANDLOCK_ACCESS_FS_MAKE_BLOCK |
      LANDLOCK_ACCESS_FS_MAKE_SYM;

  const long version =
      ::syscall(SYS_landlock_create_ruleset, nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION);
  if (version < 1) return false;
  landlock_ruleset_attr handled{};
  handled.handled_access_fs = changesOfFiles(version);
  const Descriptor rules(::syscall(SYS_landlock_create_ruleset, &handled, sizeof handled, 0));
  if (!rules.valid()) return false;

  if (!outputFolder.empty()) {
    const Descriptor folder(::open(outputFolder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    landlock_path_beneath_attr allowed{};
    allowed.allowed_access = handled.handled_access_fs & ~kNotInFolder;
    allowed.parent_fd = folder.number();
    if (!folder.valid() || ::syscall(SYS_landlock_add_rule, rules.number(),
                                     LANDLOCK_RULE_PATH_BENEATH, &allowed, 0) != 0)
      return false;
  }
  return ::syscall(SYS_landlock_restrict_self, rules.number(), 0) == 0;
}

#else

bool limitFiles(const std::string& /*outputFolder*/) {
  return false;
}

#endif

}  // namespace

std::string Sandbox::description() const {
  if (systemCalls && files) return "seccomp and Landlock";
  return systemCalls ? "seccomp" : files ? "Landlock" : "none";
}

Sandbox enterSandbox(const std::string& outputFolder) {
  Sandbox sandbox;
  // Both want it: no program that is run can gain what this one does not have.
  if (::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0) return sandbox;
  sandbox.files = limitFiles(outputFolder);
  sandbox.systemCalls =
      limitSystemCalls(!outputFolder.empty());  // last: it allows neither of these
  return sandbox;
}

}  // namespace qps
