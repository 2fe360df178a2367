// SPDX-License-Identifier: MIT
//
// floor_csv FILE: the least that a process can do which turns the first worksheet of a notebook
// into CSV: reads the file, walks the records, renders with std::to_chars, quotes what needs it and
// writes in large blocks. The cells must come row by row and fill each row.
#include <cstdio>
#include <fstream>
#include <string_view>
#include <vector>

#include "bench/floor.h"
#include "bench/lean_stream.h"

namespace {

using namespace qps::bench;

constexpr std::size_t kBlockBytes = std::size_t{1} << 18;
constexpr std::size_t kMostCellBytes = 2 * kFloorTextBytes + 4;

class CsvBlock {
 public:
  ~CsvBlock() { flush(); }

  void cell(std::string_view text, bool first) {
    if (kBlockBytes - size_ < kMostCellBytes) flush();
    if (!first) put(',');
    if (text.find_first_of(",\"\r\n") == std::string_view::npos) {
      size_ += text.copy(block_ + size_, text.size());
      return;
    }
    put('"');
    for (const char character : text) {
      if (character == '"') put('"');
      put(character);
    }
    put('"');
  }
  void endRow() { put('\n'); }

 private:
  void put(char character) { block_[size_++] = character; }
  void flush() {
    std::fwrite(block_, 1, size_, stdout);
    size_ = 0;
  }

  char block_[kBlockBytes];
  std::size_t size_ = 0;
};

std::vector<std::byte> readFile(const char* path) {
  std::ifstream file(path, std::ios::binary | std::ios::ate);
  std::vector<std::byte> bytes(static_cast<std::size_t>(file.tellg()));
  file.seekg(0);
  file.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  return bytes;
}

void writeCsv(SSStream* stream) {
  static CsvBlock out;
  bool inSheet = false;
  unsigned row = 0;
  walkRecords(stream, 0, [&](unsigned type, const std::uint8_t* body, std::size_t bytes) {
    inSheet = inSheet || type == qps::test::rec::kSheetStart;
    if (!inSheet || !isCellRecord(type)) return type != qps::test::rec::kSheetEnd;
    const unsigned cellRow = body[2] | static_cast<unsigned>(body[3]) << 8;
    if (cellRow != row) out.endRow();
    row = cellRow;
    char area[kFloorTextBytes];
    out.cell(floorText(familyOf(body), body, bytes, area), body[0] == 0);
    return true;
  });
  out.endRow();
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  const std::vector<std::byte> bytes = readFile(argv[1]);
  LeanStream stream(bytes);
  writeCsv(&stream);
  return 0;
}
