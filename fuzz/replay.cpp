// SPDX-License-Identifier: MIT
//
// Runs a fuzz target over files, and over all files of folders: with any compiler, without a
// fuzzer. A broken promise aborts; the input that did it is named before it runs.
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

namespace fs = std::filesystem;

std::size_t inputs = 0;

void replay(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  const std::string bytes{std::istreambuf_iterator<char>(file), {}};
  std::printf("%s\n", path.string().c_str());
  std::fflush(stdout);
  // A block of just that size, so that a read beyond it can show.
  const auto block = std::make_unique<std::uint8_t[]>(bytes.size());
  std::copy(bytes.begin(), bytes.end(), block.get());
  LLVMFuzzerTestOneInput(block.get(), bytes.size());
  ++inputs;
}

}  // namespace

int main(int argc, char** argv) {
  for (int i = 1; i < argc; ++i) {
    if (!fs::is_directory(argv[i])) {
      replay(argv[i]);
      continue;
    }
    for (const auto& entry : fs::directory_iterator(argv[i]))
      replay(entry.path());
  }
  std::printf("%zu inputs replayed\n", inputs);
  return inputs != 0 ? 0 : 1;
}
