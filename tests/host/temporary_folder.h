// SPDX-License-Identifier: MIT
//
// A folder of its own for a test, gone with everything in it afterwards.
#ifndef QPSREADER_TESTS_HOST_TEMPORARY_FOLDER_H
#define QPSREADER_TESTS_HOST_TEMPORARY_FOLDER_H

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <span>
#include <string>

namespace qps::test {

class TemporaryFolder {
 public:
  TemporaryFolder() {
    const auto* const test = testing::UnitTest::GetInstance()->current_test_info();
    const auto now = std::chrono::steady_clock::now().time_since_epoch().count();
    path_ = std::filesystem::path(testing::TempDir()) /
            ("qps-" + std::string(test->name()) + "-" + std::to_string(now));
    std::filesystem::create_directory(path_);
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  ~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }

  const std::filesystem::path& path() const { return path_; }

  std::filesystem::path write(const std::string& name, std::span<const std::byte> bytes) const {
    std::ofstream(path_ / name, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
    return path_ / name;
  }

 private:
  std::filesystem::path path_;
};

}  // namespace qps::test

#endif  // QPSREADER_TESTS_HOST_TEMPORARY_FOLDER_H
