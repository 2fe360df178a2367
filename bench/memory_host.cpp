// SPDX-License-Identifier: MIT
#include "bench/memory_host.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <type_traits>

#include "olefio/get_ole_interface.h"

namespace qps::bench {

namespace {

constexpr std::size_t kRecordHeaderBytes = 4;

}  // namespace

MemoryHost::MemoryHost(std::span<const std::byte> file) : file_(file) {
  installStream();
  installServices();
}

MemoryHost& MemoryHost::of(SSStream* stream) {
  static_assert(std::is_standard_layout_v<MemoryHost>);
  return *reinterpret_cast<MemoryHost*>(stream);
}

void MemoryHost::installStream() {
  stream_.open = [](SSStream* stream) {
    of(stream).position_ = 0;
    return std::int32_t{1};
  };
  stream_.read = [](SSStream* stream, void* buffer, std::size_t count) {
    MemoryHost& host = of(stream);
    const std::size_t taken = std::min(count, host.file_.size() - host.position_);
    const std::byte* bytes = host.file_.data() + host.position_;
    // Half of all reads are headers, for which a call would be most of the cost.
    if (taken == kRecordHeaderBytes) {
      std::memcpy(buffer, bytes, kRecordHeaderBytes);
    } else {
      std::memcpy(buffer, bytes, taken);
    }
    host.position_ += taken;
    return taken;
  };
  stream_.seek = [](SSStream* stream, std::ptrdiff_t offset, std::int32_t origin) {
    MemoryHost& host = of(stream);
    const std::size_t base = origin == SSSeekFromStart ? 0 : host.position_;
    const std::size_t target = base + static_cast<std::size_t>(offset);
    if (target > host.file_.size()) return std::int32_t{0};
    host.position_ = target;
    return std::int32_t{1};
  };
  stream_.tell = [](SSStream* stream) { return static_cast<std::ptrdiff_t>(of(stream).position_); };
  stream_.close = [](SSStream*) {};
}

void MemoryHost::installServices() {
  services_.loadLibrary = [](SSHostServices*, const char*, void** handle) {
    static char library;
    *handle = &library;
    return std::int32_t{1};
  };
  services_.getSymbol = [](SSHostServices*, void*, const char*) {
    return reinterpret_cast<void*>(&GetOLEInterface);
  };
  services_.freeLibrary = [](SSHostServices*, void*) {};
  services_.pool.alloc = [](SSMemoryPool*, std::size_t size) { return std::malloc(size); };
  services_.pool.free = [](SSMemoryPool*, void* block) { std::free(block); };
  services_.pool.realloc = [](SSMemoryPool*, void* block, std::size_t size) {
    return std::realloc(block, size);
  };
  services_.pool.calloc = [](SSMemoryPool*, std::size_t count, std::size_t size) {
    return std::calloc(count, size);
  };
  services_.toLowerText = [](SSHostServices*, char* text) {
    for (char* at = text; *at != '\0'; ++at)
      if (*at >= 'A' && *at <= 'Z') *at = static_cast<char>(*at - 'A' + 'a');
    return text;
  };
  services_.toUpperText = [](SSHostServices*, char* text) {
    for (char* at = text; *at != '\0'; ++at)
      if (*at >= 'a' && *at <= 'z') *at = static_cast<char>(*at - 'a' + 'A');
    return text;
  };
}

void* MemoryHost::itemAlloc(void* context, void*, std::size_t size, std::uint32_t) {
  auto& host = *static_cast<MemoryHost*>(context);
  if (size > static_cast<std::size_t>(host.textEnd_ - host.text_)) return host.allocateText(size);
  char* text = host.text_;
  host.text_ += size;
  return text;
}

void* MemoryHost::allocateText(std::size_t size) {
  if (size > kBlockBytes) return nullptr;
  if (nextBlock_ == blocks_.size()) {
    blocks_.push_back(std::make_unique_for_overwrite<char[]>(kBlockBytes));
  }
  char* block = blocks_[nextBlock_++].get();
  text_ = block + size;
  textEnd_ = block + kBlockBytes;
  return block;
}

void MemoryHost::dropTexts() {
  nextBlock_ = 0;
  text_ = textEnd_ = nullptr;
}

}  // namespace qps::bench
