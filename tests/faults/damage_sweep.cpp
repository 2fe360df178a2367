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
using FileBytes = std::vector<uint8_t>;

constexpr uint32_t kMostItems = 2000;
size_t readings = 0;

void visit(std::span<const uint8_t> file, const char* damage, size_t offset, unsigned value) {
  static char running[100];
  std::snprintf(running, sizeof running, "%s %zu, %u (%zu bytes)", damage, offset, value,
                file.size());
  setRunning(running);
  LeanHost host(file);
  host.seekBeyondEnd = offset % 2 == 0;
  visitNotebook(host, kMostItems, kCompoundWork);
  host.requireAtRest();
  ++readings;
}

void sweep(FileBytes file, unsigned step) {
  for (size_t size = 0; size < file.size(); ++size) {
    // A block of just that size, so that a read beyond it shows.
    const FileBytes beginning(file.begin(), file.begin() + static_cast<std::ptrdiff_t>(size));
    visit(beginning, "cut", size, 0);
  }
  for (size_t offset = 0; offset < file.size(); ++offset) {
    const uint8_t right = file[offset];
    for (unsigned distance = step; distance < 256; distance += step) {
      file[offset] = static_cast<uint8_t>(right + distance);
      visit(file, "byte", offset, file[offset]);
    }
    file[offset] = right;
  }
}

}  // namespace

int main(int argc, char** argv) {
  const int step = argc > 2 ? std::atoi(argv[1]) : 0;
  if (step < 1) return 2;
  for (int i = 2; i < argc; ++i) {
    std::ifstream file(argv[i], std::ios::binary);
    const FileBytes bytes{std::istreambuf_iterator<char>(file), {}};
    if (bytes.empty()) {
      std::fprintf(stderr, "cannot read %s\n", argv[i]);
      return 1;
    }
    sweep(bytes, static_cast<unsigned>(step));
  }
  std::printf("%zu damaged files read\n", readings);
  return 0;
}
