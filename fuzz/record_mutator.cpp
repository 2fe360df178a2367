// SPDX-License-Identifier: MIT
//
// Mutates inputs that end in a notebook record by record: bytes that are inserted or lost in a body
// otherwise turn all records behind it into noise. Half of the time libFuzzer's own mutations are
// left to do just that. QPS_FUZZ_PREFIX_BYTES is what stands before the notebook.
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <random>
#include <vector>

extern "C" size_t LLVMFuzzerMutate(uint8_t* data, size_t size, size_t maxSize);

namespace {

constexpr size_t kHeaderBytes = 4;
constexpr uint16_t kTypes[] = {0,   1,   6,   12,  13,  14,  15,  16,  37,  38,  51,  76,
                               150, 202, 203, 204, 206, 207, 208, 210, 212, 214, 216, 220,
                               222, 224, 230, 231, 232, 257, 258, 261, 265, 266, 310};

struct Record {
  uint16_t type;
  std::vector<uint8_t> body;
};

// A cut record at the end is taken as a whole one.
std::vector<Record> split(const uint8_t* data, size_t size) {
  std::vector<Record> records;
  while (size >= kHeaderBytes) {
    const auto type = static_cast<uint16_t>(data[0] | data[1] << 8);
    const auto stated = static_cast<uint16_t>(data[2] | data[3] << 8);
    const size_t length = std::min<size_t>(stated, size - kHeaderBytes);
    records.push_back({type, {data + kHeaderBytes, data + kHeaderBytes + length}});
    data += kHeaderBytes + length;
    size -= kHeaderBytes + length;
  }
  return records;
}

// Writes as many whole records as fit and returns their size.
size_t join(const std::vector<Record>& records, uint8_t* data, size_t maxSize) {
  size_t size = 0;
  for (const Record& record : records) {
    const size_t length = record.body.size();
    if (maxSize - size < kHeaderBytes + length) break;
    const uint8_t header[] = {
        static_cast<uint8_t>(record.type & 0xFF), static_cast<uint8_t>(record.type >> 8),
        static_cast<uint8_t>(length & 0xFF), static_cast<uint8_t>(length >> 8)};
    std::memcpy(data + size, header, kHeaderBytes);
    if (length != 0) std::memcpy(data + size + kHeaderBytes, record.body.data(), length);
    size += kHeaderBytes + length;
  }
  return size;
}

void mutateBody(Record& record, size_t room) {
  constexpr size_t kMostGrowth = 32;
  const size_t size = record.body.size();
  record.body.resize(size + std::min(room, kMostGrowth));
  if (record.body.empty()) return;
  record.body.resize(LLVMFuzzerMutate(record.body.data(), size, record.body.size()));
}

void mutate(std::vector<Record>& records, std::minstd_rand& random, size_t room) {
  const auto below = [&](size_t bound) { return static_cast<size_t>(random() % bound); };
  const size_t count = records.size();
  const auto at = records.begin() + static_cast<std::ptrdiff_t>(below(count));
  const auto other = records.begin() + static_cast<std::ptrdiff_t>(below(count));
  switch (below(6)) {
    case 0:
      records.insert(other, Record(*at));
      break;
    case 1:
      if (count > 1) records.erase(at);
      break;
    case 2:
      std::swap(*at, *other);
      break;
    case 3:
      at->type = kTypes[below(std::size(kTypes))];
      break;
    case 4:
      records.insert(at, {kTypes[below(std::size(kTypes))], std::vector<uint8_t>(below(20))});
      break;
    default:
      mutateBody(*at, room);
      break;
  }
}

}  // namespace

extern "C" size_t LLVMFuzzerCustomMutator(uint8_t* data, size_t size, size_t maxSize,
                                          unsigned seed) {
  constexpr size_t kPrefixBytes = QPS_FUZZ_PREFIX_BYTES;
  std::minstd_rand random(seed);
  if (random() % 2 == 0 || size < kPrefixBytes + kHeaderBytes) {
    return LLVMFuzzerMutate(data, size, maxSize);
  }
  std::vector<Record> records = split(data + kPrefixBytes, size - kPrefixBytes);
  for (size_t i = random() % 4; i < 4; ++i)
    mutate(records, random, maxSize - size);
  return kPrefixBytes + join(records, data + kPrefixBytes, maxSize - kPrefixBytes);
}
