// SPDX-License-Identifier: MIT
//
// Numbers out of file bytes: the only place that knows their byte order. A record whose fields are
// read has a size that the compiler knows, so a field cannot lie outside of it.
#ifndef QPSREADER_OLEFIO_BYTES_H
#define QPSREADER_OLEFIO_BYTES_H

#include <cstddef>
#include <cstdint>
#include <span>

namespace qps::ole {

template <class Unsigned>
constexpr Unsigned loadLittleEndian(std::span<const std::byte, sizeof(Unsigned)> bytes) {
  Unsigned value = 0;
  for (std::size_t i = 0; i < sizeof(Unsigned); ++i) {
    value = static_cast<Unsigned>(value | std::to_integer<Unsigned>(bytes[i]) << (8 * i));
  }
  return value;
}

template <class Unsigned, std::size_t kOffset, std::size_t kRecordBytes>
constexpr Unsigned field(std::span<const std::byte, kRecordBytes> record) {
  static_assert(kRecordBytes != std::dynamic_extent);
  return loadLittleEndian<Unsigned>(record.template subspan<kOffset, sizeof(Unsigned)>());
}

// Element `index` of the packed numbers in `bytes`, which must hold it.
template <class Unsigned>
constexpr Unsigned element(std::span<const std::byte> bytes, std::size_t index) {
  return loadLittleEndian<Unsigned>(
      bytes.subspan(index * sizeof(Unsigned)).template first<sizeof(Unsigned)>());
}

}  // namespace qps::ole

#endif  // QPSREADER_OLEFIO_BYTES_H
