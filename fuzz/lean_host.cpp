// SPDX-License-Identifier: MIT
#include "fuzz/lean_host.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "olefio/get_ole_interface.h"

#if defined(__SANITIZE_ADDRESS__)
#define QPS_FUZZ_POISONING
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define QPS_FUZZ_POISONING
#endif
#endif
#ifdef QPS_FUZZ_POISONING
#include <sanitizer/asan_interface.h>
#endif

namespace qps::fuzz {

namespace {
const char* running = nullptr;
}  // namespace

void setRunning(const char* what) {
  running = what;
}

void fail(const char* promise) {
  std::fprintf(stderr, "broken promise: %s\n", promise);
  if (running != nullptr) std::fprintf(stderr, "while reading %s\n", running);
  std::abort();
}

// In front of every block; the address sanitizer keeps the reader out of it.
struct LeanHost::Header {
  uint64_t size;
  Kind kind;
  uint32_t unused;

  static Header* of(void* block) {
    auto* header = static_cast<Header*>(block) - 1;
#ifdef QPS_FUZZ_POISONING
    ASAN_UNPOISON_MEMORY_REGION(header, sizeof(Header));
#endif
    return header;
  }

  void* seal() {
    void* block = this + 1;
#ifdef QPS_FUZZ_POISONING
    ASAN_POISON_MEMORY_REGION(this, sizeof(Header));
#endif
    return block;
  }
};

LeanHost::LeanHost(std::span<const uint8_t> file) : file_(file) {
  static_assert(sizeof(Header) % alignof(std::max_align_t) == 0);
  fillServices();
  fillStream();
}

LeanHost& LeanHost::of(SSStream* stream) {
  return *static_cast<Stream*>(stream)->host;
}

void LeanHost::fillServices() {
  services_.pool.state = this;
  services_.pool.alloc = [](SSMemoryPool* pool, size_t size) {
    return of(pool).allocate(size, Kind::kPoolBlock, 0x5C);
  };
  services_.pool.calloc = [](SSMemoryPool* pool, size_t count, size_t size) {
    require(size == 0 || count <= SIZE_MAX / size, "calloc of more than there can be");
    return of(pool).allocate(count * size, Kind::kPoolBlock, 0);
  };
  services_.pool.realloc = [](SSMemoryPool* pool, void* block, size_t size) {
    return of(pool).resize(block, size);
  };
  services_.pool.free = [](SSMemoryPool* pool, void* block) {
    of(pool).release(block, Kind::kPoolBlock);
  };
  const auto convert = [](char* text, char first, char last) {
    for (char* c = text; *c != '\0'; ++c) {
      if (*c >= first && *c <= last) *c = static_cast<char>(*c ^ 0x20);
    }
    return text;
  };
  services_.toLowerText = [](SSHostServices*, char* text) {
    return decltype(convert){}(text, 'A', 'Z');
  };
  services_.toUpperText = [](SSHostServices*, char* text) {
    return decltype(convert){}(text, 'a', 'z');
  };
  services_.loadLibrary = [](SSHostServices* services, const char* name, void** handle) {
    LeanHost& host = of(services);
    require(std::strcmp(name, OLE_LIBRARY_NAME) == 0, "loads one library by name");
    if (host.shouldFail(Step::kLoadLibrary)) return 0;
    ++host.libraries_;
    *handle = &host.libraries_;
    return 1;
  };
  services_.getSymbol = [](SSHostServices* services, void* library, const char* name) -> void* {
    LeanHost& host = of(services);
    require(library == &host.libraries_ && host.libraries_ > 0, "symbols of a loaded library");
    require(std::strcmp(name, OLE_ENTRY_POINT) == 0, "asks for one symbol");
    if (host.shouldFail(Step::kGetSymbol)) return nullptr;
    return reinterpret_cast<void*>(&GetOLEInterface);
  };
  services_.freeLibrary = [](SSHostServices* services, void* library) {
    LeanHost& host = of(services);
    require(library == &host.libraries_ && host.libraries_ > 0, "frees a loaded library");
    --host.libraries_;
  };
}

void LeanHost::fillStream() {
  stream_.host = this;
  stream_.open = [](SSStream* stream) -> int32_t {
    LeanHost& host = of(stream);
    require(!host.isOpen_, "opens a closed stream");
    host.position_ = 0;
    host.isRefused_ = host.shouldFail(Step::kOpen);
    host.isOpen_ = !host.isRefused_;
    return host.isOpen_ ? 1 : 0;
  };
  stream_.read = [](SSStream* stream, void* buffer, size_t count) {
    return of(stream).read(buffer, count);
  };
  stream_.seek = [](SSStream* stream, ptrdiff_t offset, int32_t origin) -> int32_t {
    return of(stream).seek(offset, origin) ? 1 : 0;
  };
  stream_.tell = [](SSStream* stream) {
    LeanHost& host = of(stream);
    require(host.isOpen_, "tell of an open stream");
    ++host.work_.calls;
    return static_cast<ptrdiff_t>(host.position_);
  };
  stream_.close = [](SSStream* stream) {
    LeanHost& host = of(stream);
    require(host.isOpen_ || host.isRefused_, "closes an open stream, once");
    ++host.work_.calls;
    host.isOpen_ = host.isRefused_ = false;
  };
}

// Overwrites the whole buffer, so that one that is smaller than `count` shows, and so does the use
// of bytes that did not arrive.
size_t LeanHost::read(void* buffer, size_t count) {
  require(isOpen_, "reads from an open stream");
  largestRead_ = std::max(largestRead_, count);
  if (count != 0) std::memset(buffer, 0xA5, count);
  size_t given = std::min(count, file_.size() - std::min(position_, file_.size()));
  if (shouldFail(Step::kRead)) {
    for (const Fault& fault : faults) {
      if (fault.step == Step::kRead) given -= std::min(given, fault.shortBy);
    }
  }
  if (given != 0) std::memcpy(buffer, file_.data() + position_, given);
  position_ += given;
  work_.bytesRead += given;
  return given;
}

bool LeanHost::seek(ptrdiff_t offset, int32_t origin) {
  require(isOpen_, "seeks in an open stream");
  require(origin == SSSeekFromStart || origin == SSSeekFromCurrent, "a known origin");
  const ptrdiff_t base = origin == SSSeekFromCurrent ? static_cast<ptrdiff_t>(position_) : 0;
  if (shouldFail(Step::kSeek) || offset > PTRDIFF_MAX - base || offset + base < 0) return false;
  const auto target = static_cast<size_t>(offset + base);
  if (!seekBeyondEnd && target > file_.size()) return false;
  position_ = target;
  return true;
}

bool LeanHost::shouldFail(Step step) {
  ++work_.calls;
  const uint32_t call = ++stepCalls_[static_cast<size_t>(step)];
  const auto fails = [&](const Fault& fault) {
    return fault.step == step && (call == fault.nth || (fault.forGood && call > fault.nth));
  };
  return fails(faults[0]) || fails(faults[1]);
}

void LeanHost::failFromNowOn(Step step) {
  faults[0] = {.step = step, .nth = stepCalls_[static_cast<size_t>(step)] + 1, .forGood = true};
}

void* LeanHost::itemAlloc(void* host, void* block, size_t size, uint32_t flags) {
  require(block == nullptr && flags == 0, "item texts are new blocks without flags");
  return static_cast<LeanHost*>(host)->allocate(size, Kind::kItemText, 0x5C);
}

void* LeanHost::allocate(size_t size, Kind kind, int filling) {
  require(size != 0, "no block of no bytes");
  if (shouldFail(kind == Kind::kItemText ? Step::kItemText : Step::kPoolBlock)) return nullptr;
  auto* header = static_cast<Header*>(std::malloc(sizeof(Header) + size));
  if (header == nullptr) return nullptr;
  header->size = size;
  header->kind = kind;
  // A block of calloc is all zeros. The others show by their ends whether they are used before they
  // are filled; the sheet itself is large, and filling it every time is slow.
  constexpr size_t kFilledBytes = 256;
  if (filling == 0 || size <= 2 * kFilledBytes) {
    std::memset(header + 1, filling, size);
  } else {
    std::memset(header + 1, filling, kFilledBytes);
    std::memset(reinterpret_cast<char*>(header + 1) + size - kFilledBytes, filling, kFilledBytes);
  }
  if (kind == Kind::kItemText) {
    ++itemTexts_;
  } else {
    ++poolBlocks_;
    poolBytes_ += size;
    peakPoolBytes_ = std::max(peakPoolBytes_, poolBytes_);
  }
  return header->seal();
}

void LeanHost::release(void* block, Kind kind) {
  require(block != nullptr, "no null goes back");
  ++work_.calls;
  Header* header = Header::of(block);
  require(header->kind == kind, "a block goes back to where it came from, once");
  header->kind = Kind{};
  if (kind == Kind::kItemText) {
    --itemTexts_;
  } else {
    --poolBlocks_;
    poolBytes_ -= header->size;
  }
  std::free(header);
}

void* LeanHost::resize(void* block, size_t size) {
  void* moved = allocate(size, Kind::kPoolBlock, 0x5C);
  if (moved == nullptr) return nullptr;
  Header* old = Header::of(block);
  require(old->kind == Kind::kPoolBlock, "realloc of a block of the pool");
  const auto kept = static_cast<size_t>(std::min<uint64_t>(old->size, size));
  old->seal();
  std::memcpy(moved, block, kept);
  release(block, Kind::kPoolBlock);
  return moved;
}

void LeanHost::requireAtRest() const {
  require(poolBlocks_ == 0, "all pool blocks are back");
  require(itemTexts_ == 0, "all item texts were handed over");
  require(!isOpen_, "the stream is closed");
  require(libraries_ == 0, "no library is loaded");
}

}  // namespace qps::fuzz
