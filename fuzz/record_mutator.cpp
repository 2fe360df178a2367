// SPDX-License-Identifier: MIT
//
// Mutates inputs that end in a notebook record by record: bytes that are inserted or lost in a body
// otherwise turn all records behind it into noise. Half of the time libFuzzer's own mutations are
// left to do just that. QPS_FUZZ_PREFIX_BYTES is what stands before the notebook.
#include <algorithm>
#include <cstdint>
#include <iterator>
#include <random>
#include <vector>

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t maxSize);

namespace {

constexpr std::size_t kHeaderBytes = 4;
constexpr std::uint16_t kTypes[] = {0,   1,   6,   12,  13,  14,  15,  16,  37,  38,  51,  76,
                                    150, 202, 203, 204, 206, 207, 208, 210, 212, 214, 216, 220,
                                    222, 224, 230, 231, 232, 257, 258, 261, 265, 266, 310};

// A record with its header, whose length is written when the records are joined.
using Record = std::vector<std::uint8_t>;

void setWord(Record& record, std::size_t offset, std::size_t value) {
  record[offset] = static_cast<std::uint8_t>(value & 0xFF);
  record[offset + 1] = static_cast<std::uint8_t>(value >> 8);
}

// A cut record at the end is taken as a whole one.
std::vector<Record> split(const std::uint8_t* data, std::size_t size) {
  std::vector<Record> records;
  while (size >= kHeaderBytes) {
    const std::size_t stated = data[2] | static_cast<std::size_t>(data[3]) << 8;
    const std::size_t bytes = kHeaderBytes + std::min(stated, size - kHeaderBytes);
    records.emplace_back(data, data + bytes);
    data += bytes;
    size -= bytes;
  }
  return records;
}

// Writes as many whole records as fit and returns their size.
std::size_t join(std::vector<Record>& records, std::uint8_t* data, std::size_t maxSize) {
  std::size_t size = 0;
  for (Record& record : records) {
    if (maxSize - size < record.size()) break;
    setWord(record, 2, record.size() - kHeaderBytes);
    std::copy(record.begin(), record.end(), data + size);
    size += record.size();
  }
  return size;
}

void mutateBody(Record& record, std::size_t room) {
  constexpr std::size_t kMostGrowth = 32;
  const std::size_t size = record.size() - kHeaderBytes;
  const std::size_t most = size + std::min(room, kMostGrowth);
  if (most == 0) return;
  record.resize(kHeaderBytes + most);
  record.resize(kHeaderBytes + LLVMFuzzerMutate(record.data() + kHeaderBytes, size, most));
}

void mutate(std::vector<Record>& records, std::minstd_rand& random, std::size_t room) {
  const auto below = [&](std::size_t bound) { return random() % bound; };
  Record& one = records[below(records.size())];
  Record& other = records[below(records.size())];
  const std::uint16_t type = kTypes[below(std::size(kTypes))];
  const auto at = records.begin() + static_cast<std::ptrdiff_t>(below(records.size()));
  switch (below(6)) {
    case 0:
      records.insert(at, Record(one));
      break;
    case 1:
      if (records.size() > 1) records.erase(at);
      break;
    case 2:
      std::swap(one, other);
      break;
    case 3:
      setWord(one, 0, type);
      break;
    case 4:
      setWord(*records.insert(at, Record(kHeaderBytes + below(20))), 0, type);
      break;
    default:
      mutateBody(one, room);
      break;
  }
}

}  // namespace

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size,
                                               std::size_t maxSize, unsigned seed) {
  constexpr std::size_t kPrefixBytes = QPS_FUZZ_PREFIX_BYTES;
  std::minstd_rand random(seed);
  if (random() % 2 == 0 || size < kPrefixBytes + kHeaderBytes) {
    return LLVMFuzzerMutate(data, size, maxSize);
  }
  std::vector<Record> records = split(data + kPrefixBytes, size - kPrefixBytes);
  for (std::size_t i = random() % 4; i < 4; ++i)
    mutate(records, random, maxSize - size);
  return kPrefixBytes + join(records, data + kPrefixBytes, maxSize - kPrefixBytes);
}
