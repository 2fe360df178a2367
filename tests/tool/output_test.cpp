// SPDX-License-Identifier: MIT
//
// What happens when processes share a folder of output, at the moment at which it hurts most.
#include "tool/output.h"

#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <string>
#include <utility>

#include <gtest/gtest.h>

namespace {

namespace fs = std::filesystem;

fs::path cleanedBeforeLink;  // a folder in which another process looks for leftovers
int lockError = 0;           // what the next lock fails with
int locks = 0;               // how many were asked for

}  // namespace

// In place of the C library's: the name of an output is made.
extern "C" int link(const char* from, const char* to) noexcept {
  if (!cleanedBeforeLink.empty()) qps::removeLeftovers(cleanedBeforeLink);
  return static_cast<int>(syscall(SYS_linkat, AT_FDCWD, from, AT_FDCWD, to, 0));
}

// Named apart: a struct has the function's name.
extern "C" int lockFile(int file, int operation) noexcept __asm__("flock");
extern "C" int lockFile(int file, int operation) noexcept {
  ++locks;
  errno = std::exchange(lockError, 0);
  return errno != 0 ? -1 : static_cast<int>(syscall(SYS_flock, file, operation));
}

namespace qps {
namespace {

class OutputFiles : public testing::Test {
 protected:
  void SetUp() override {
    std::string name = (fs::temp_directory_path() / "qps_output_XXXXXX").string();
    ASSERT_NE(mkdtemp(name.data()), nullptr);
    folder_ = name;
  }
  void TearDown() override {
    cleanedBeforeLink.clear();
    fs::remove_all(folder_);
  }

  const fs::path& folder() const { return folder_; }

 private:
  fs::path folder_;
};

TEST_F(OutputFiles, AreNoLeftoversUntilTheyHaveTheirNames) {
  cleanedBeforeLink = folder();
  OutputFile file(folder(), "book.csv");
  file.out().write("1,2\n");
  removeLeftovers(folder());
  EXPECT_TRUE(file.finish(false));
  EXPECT_EQ(fs::file_size(folder() / "book.csv"), 4u);
}

TEST_F(OutputFiles, AreGivenUpToOneWhoLockedThemFirst) {
  for (const auto& [error, wanted] : {std::pair(EWOULDBLOCK, 2), std::pair(ENOLCK, 1)}) {
    locks = 0;
    lockError = error;
    const OutputFile file(folder(), "a");
    EXPECT_EQ(locks, wanted) << error;
    EXPECT_TRUE(fs::exists(file.temporary()));
  }
}

// A process that found one of them with its lock released would remove the next one.
TEST_F(OutputFiles, NeverHaveTheTemporaryNameOfAnother) {
  fs::path first;
  {
    OutputFile file(folder(), "a");
    first = file.temporary();
  }
  EXPECT_NE(OutputFile(folder(), "b").temporary(), first);
}

TEST_F(OutputFiles, TakeNoNameThatIsThere) {
  for (int number = 0; number < 100; ++number) {
    const std::string name = ".qps-" + std::to_string(getpid()) + "-" + std::to_string(number);
    fs::create_symlink("nowhere", folder() / (name + ".tmp"));
  }
  OutputFile file(folder(), "a");
  EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(file.temporary())));
  EXPECT_FALSE(fs::exists(folder() / "nowhere"));
}

TEST_F(OutputFiles, EndWhereNothingCanBeMade) {
  EXPECT_THROW(OutputFile("/proc/self", "a"), WriteError);
}

}  // namespace
}  // namespace qps
