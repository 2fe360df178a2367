// SPDX-License-Identifier: MIT
//
// damage_sweep STEP FILE...: reads every beginning of each file, and each file with every byte in
// turn set to other values, STEP apart from the right one (1 takes all 256). The checks are those
// of the fuzz targets: a broken promise aborts, and says at which byte.
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <vector>

#include "fuzz/session.h"

namespace {

using namespace qps::fuzz;

constexpr std::size_t kMostItems = 2000;
std::size_t readings = 0;

void visit(const Bytes& file, const char* damage, std::size_t offset, unsigned value) {
  static char running[100];
  std::snprintf(running, sizeof running, "%s %zu, %u (%zu bytes)", damage, offset, value,
                file.size());
  setRunning(running);
  RecordingHost host(file);
  host.seekBeyondEnd = offset % 2 == 0;
  visitNotebook(host, kMostItems, kCompoundWork);
  ++readings;
}

void sweep(Bytes file, unsigned step) {
  for (std::size_t size = 0; size < file.size(); ++size) {
    const auto end = file.begin() + static_cast<std::ptrdiff_t>(size);
    visit(Bytes(file.begin(), end), "cut", size, 0);
  }
  for (std::size_t offset = 0; offset < file.size(); ++offset) {
    const auto right = std::to_integer<unsigned>(file[offset]);
    for (unsigned distance = step; distance < 256; distance += step) {
      file[offset] = static_cast<std::byte>(right + distance);
      visit(file, "byte", offset, (right + distance) & 0xFF);
    }
    file[offset] = static_cast<std::byte>(right);
  }
}

}  // namespace

int main(int argc, char** argv) {
  const int step = argc > 2 ? std::atoi(argv[1]) : 0;
  if (step < 1) return 2;
  for (int i = 2; i < argc; ++i) {
    std::ifstream file(argv[i], std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    if (text.empty()) {
      std::fprintf(stderr, "cannot read %s\n", argv[i]);
      return 1;
    }
    sweep(bytesOf(text), static_cast<unsigned>(step));
  }
  std::printf("%zu damaged files read\n", readings);
  return 0;
}
