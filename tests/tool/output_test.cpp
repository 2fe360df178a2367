// SPDX-License-Identifier: MIT
//
// What happens when processes share a folder of output, at the moment at which it hurts most.
#include "tool/output.h"

#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include <gtest/gtest.h>

namespace {

namespace fs = std::filesystem;

fs::path cleanedBeforeLink;  // a folder in which another process looks for leftovers

}  // namespace

// In place of the C library's: the name of an output is made.
extern "C" int link(const char* from, const char* to) noexcept {
  if (!cleanedBeforeLink.empty()) qps::removeLeftovers(cleanedBeforeLink);
  return static_cast<int>(syscall(SYS_linkat, AT_FDCWD, from, AT_FDCWD, to, 0));
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

  fs::path folder_;
};

TEST_F(OutputFiles, AreNoLeftoversUntilTheyHaveTheirNames) {
  cleanedBeforeLink = folder_;
  OutputFile file(folder_, "book.csv");
  file.out().write("1,2\n");
  removeLeftovers(folder_);
  EXPECT_TRUE(file.finish(false));
  EXPECT_EQ(fs::file_size(folder_ / "book.csv"), 4u);
}

// A process that found one of them with its lock released would remove the next one.
TEST_F(OutputFiles, NeverHaveTheTemporaryNameOfAnother) {
  fs::path first;
  {
    OutputFile file(folder_, "a");
    first = file.temporary();
  }
  EXPECT_NE(OutputFile(folder_, "b").temporary(), first);
}

TEST_F(OutputFiles, TakeNoNameThatIsThere) {
  for (int number = 0; number < 100; ++number) {
    const std::string name = ".qps-" + std::to_string(getpid()) + "-" + std::to_string(number);
    fs::create_symlink("nowhere", folder_ / (name + ".tmp"));
  }
  OutputFile file(folder_, "a");
  EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(file.temporary())));
  EXPECT_FALSE(fs::exists(folder_ / "nowhere"));
}

TEST_F(OutputFiles, EndWhereNothingCanBeMade) {
  EXPECT_THROW(OutputFile("/proc/self", "a"), WriteError);
}

}  // namespace
}  // namespace qps
