// SPDX-License-Identifier: MIT
//
// The sandbox from inside: what a notebook must not be able to make of the program is tried by it.
#include "tool/sandbox.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/ptrace.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <string>

namespace qps {
namespace {

namespace fs = std::filesystem;

// What `attempt` returns in a child that has entered the sandbox, at most 127.
int inside(const std::string& outputFolder, const std::function<int(const Sandbox&)>& attempt) {
  const pid_t child = fork();
  if (child == 0) _exit(attempt(enterSandbox(outputFolder)));
  int status = 0;
  waitpid(child, &status, 0);
  EXPECT_TRUE(WIFEXITED(status));
  return WEXITSTATUS(status);
}

bool opens(const std::string& path, int flags) {
  return ::open(path.c_str(), flags, 0600) >= 0;
}

int runsProgram(const char* program) {
  const pid_t child = ::fork();
  if (child < 0) return 0;
  if (child == 0) {
    ::execl(program, program, nullptr);
    _exit(99);
  }
  int status = 99 << 8;
  ::waitpid(child, &status, 0);
  return WEXITSTATUS(status) == 99 ? 0 : 1;
}

class SandboxTest : public testing::Test {
 protected:
  SandboxTest() : folder_(testing::TempDir() + "qps-sandbox-" + std::to_string(getpid())) {
    fs::create_directories(out());
    std::fclose(std::fopen(file().c_str(), "w"));
  }
  ~SandboxTest() override { fs::remove_all(folder_); }

  std::string out() const { return folder_ + "/out"; }
  std::string file() const { return folder_ + "/file"; }

 private:
  std::string folder_;
};

struct Attempt {
  const char* what;
  std::function<int()> succeeds;
};

TEST_F(SandboxTest, NoProgramNoSocketNoOtherProcessAndNoFileIsWrittenTo) {
  if (::prctl(PR_GET_SECCOMP) < 0) GTEST_SKIP() << "this kernel has no seccomp";
  EXPECT_EQ(inside("", [](const Sandbox& sandbox) { return sandbox.systemCalls; }), 1);
  const Attempt attempts[] = {
      {"run a program", [] { return ::execl("/bin/true", "true", nullptr) == 0; }},
      {"fork", [] { return ::fork() >= 0; }},
      {"open a socket", [] { return ::socket(AF_INET, SOCK_STREAM, 0) >= 0; }},
      {"open a local socket", [] { return ::socket(AF_UNIX, SOCK_DGRAM, 0) >= 0; }},
      {"signal a process", [] { return ::kill(::getppid(), 0) == 0; }},
      {"trace", [] { return ::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) == 0; }},
      {"make memory executable",
       [] {
         return ::mmap(nullptr, 4096, PROT_READ | PROT_EXEC, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0) !=
                MAP_FAILED;
       }},
      {"type on a terminal", [] { return ::ioctl(0, TIOCSTI, "x") == 0 || errno != EPERM; }},
      {"write to a file", [this] { return opens(file(), O_WRONLY); }},
      {"write and read", [this] { return opens(file(), O_RDWR); }},
      {"empty a file", [this] { return opens(file(), O_RDONLY | O_TRUNC); }},
      {"make a file", [this] { return opens(file() + "2", O_RDONLY | O_CREAT); }},
      {"remove a file", [this] { return ::unlink(file().c_str()) == 0; }},
      {"rename a file", [this] { return ::rename(file().c_str(), out().c_str()) == 0; }},
      {"change a mode", [this] { return ::chmod(file().c_str(), 0777) == 0; }},
  };
  for (const Attempt& attempt : attempts)
    EXPECT_EQ(inside("", [&](const Sandbox&) { return attempt.succeeds(); }), 0) << attempt.what;
  EXPECT_EQ(inside("", [&](const Sandbox&) { return opens(file(), O_RDONLY); }), 1);
}

TEST_F(SandboxTest, FilesAreWrittenInTheFolderOfOutputOnly) {
  if (::syscall(SYS_landlock_create_ruleset, nullptr, 0, 1) < 0)
    GTEST_SKIP() << "this kernel has no Landlock";
  EXPECT_EQ(inside(out(), [](const Sandbox& sandbox) { return sandbox.files; }), 1);
  EXPECT_EQ(inside(out() + "/none", [](const Sandbox& sandbox) { return sandbox.files; }), 0);
  const Attempt allowed[] = {
      {"make a file", [this] { return opens(out() + "/a", O_WRONLY | O_CREAT | O_EXCL); }},
      {"replace one",
       [this] { return ::rename((out() + "/a").c_str(), (out() + "/b").c_str()) == 0; }},
      {"give one a second name",
       [this] { return ::link((out() + "/b").c_str(), (out() + "/c").c_str()) == 0; }},
      {"make a folder", [this] { return ::mkdir((out() + "/new").c_str(), 0700) == 0; }},
      {"a file in it", [this] { return opens(out() + "/new/a", O_WRONLY | O_CREAT); }},
      {"remove it", [this] { return ::unlink((out() + "/b").c_str()) == 0; }},
      {"read elsewhere", [this] { return opens(file(), O_RDONLY); }},
  };
  for (const Attempt& attempt : allowed)
    EXPECT_EQ(inside(out(), [&](const Sandbox&) { return attempt.succeeds(); }), 1) << attempt.what;

  std::fclose(std::fopen((out() + "/a").c_str(), "w"));
  const Attempt forbidden[] = {
      {"make a file elsewhere", [this] { return opens(file() + "2", O_WRONLY | O_CREAT); }},
      {"make a folder elsewhere", [this] { return ::mkdir((file() + "3").c_str(), 0700) == 0; }},
      {"write to one elsewhere", [this] { return opens(file(), O_WRONLY); }},
      {"by way of the folder", [this] { return opens(out() + "/../file", O_WRONLY); }},
      {"empty one elsewhere", [this] { return opens(file(), O_RDONLY | O_TRUNC); }},
      {"remove one elsewhere", [this] { return ::unlink(file().c_str()) == 0; }},
      {"move one out", [this] { return ::rename((out() + "/a").c_str(), file().c_str()) == 0; }},
      {"link to one elsewhere",
       [this] { return ::link(file().c_str(), (out() + "/c").c_str()) == 0; }},
      {"have signals sent", [] { return ::fcntl(0, F_SETOWN, ::getppid()) == 0; }},
      {"run a program", [] { return runsProgram("/bin/true"); }},
  };
  for (const Attempt& attempt : forbidden)
    EXPECT_EQ(inside(out(), [&](const Sandbox&) { return attempt.succeeds(); }), 0) << attempt.what;
}

}  // namespace
}  // namespace qps
