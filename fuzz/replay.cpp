// SPDX-License-Identifier: MIT
//
// Runs a fuzz target over files, and over all files of folders: with any compiler, without a
// fuzzer. A broken promise aborts; the input that did it is named before it runs.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

std::vector<std::filesystem::path> filesOf(const std::filesystem::path& path) {
  if (!std::filesystem::is_directory(path)) return {path};
  std::vector<std::filesystem::path> files;
  for (const auto& entry : std::filesystem::directory_iterator(path)) {
    if (entry.is_regular_file()) files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end());
  return files;
}

bool replay(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
  if (!file && !file.eof()) {
    std::fprintf(stderr, "cannot read %s\n", path.string().c_str());
    return false;
  }
  std::printf("%s\n", path.string().c_str());
  std::fflush(stdout);
  // A block of just that size, so that a read beyond it can show.
  const auto block = std::make_unique<uint8_t[]>(bytes.size());
  std::copy(bytes.begin(), bytes.end(), block.get());
  LLVMFuzzerTestOneInput(block.get(), bytes.size());
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  size_t inputs = 0;
  for (int i = 1; i < argc; ++i) {
    for (const auto& path : filesOf(argv[i])) {
      if (!replay(path)) return 1;
      ++inputs;
    }
  }
  std::printf("%zu inputs replayed\n", inputs);
  return inputs != 0 ? 0 : 1;
}
