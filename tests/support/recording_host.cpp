// SPDX-License-Identifier: MIT
//
// The host tables are filled with captureless lambdas, which find the object behind the table.
// Every reserved slot holds an address that must not be called.
#include "tests/support/recording_host.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#if defined(__SANITIZE_ADDRESS__)
#define QPS_TEST_POISONING
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define QPS_TEST_POISONING
#endif
#endif
#ifdef QPS_TEST_POISONING
#include <sanitizer/asan_interface.h>
#endif

namespace qps::test {

namespace {

constexpr int kFreshBlock = 0x5C;
constexpr int kFreshBuffer = 0xA5;

const char* running = nullptr;

template <std::size_t N>
void poison(void* (&slots)[N]) {
  std::fill(std::begin(slots), std::end(slots), reinterpret_cast<void*>(std::uintptr_t{1}));
}

std::string convertCase(std::string text, char first, char last) {
  for (char& c : text) {
    if (c >= first && c <= last) c = static_cast<char>(c ^ 0x20);
  }
  return text;
}

}  // namespace

void setRunning(const char* what) {
  running = what;
}

void broken(const char* promise) {
  std::fprintf(stderr, "broken promise: %s\n", promise);
  if (running != nullptr) std::fprintf(stderr, "while reading %s\n", running);
  std::abort();
}

const char* nameOf(Step step) {
  constexpr const char* kNames[] = {"open",       "read",        "seek",      "pool block",
                                    "item text",  "loadLibrary", "getSymbol", "openContainer",
                                    "openStream", "streamObject"};
  return kNames[static_cast<std::size_t>(step)];
}

RecordingStream::RecordingStream(RecordingHost& host, const char* prefix, Bytes bytes, bool isOpen)
    : SSStream{}, host_(host), prefix_(prefix), bytes_(std::move(bytes)), isOpen_(isOpen) {
  poison(reserved0);
  reserved10 = reserved0[0];
  open = [](SSStream* stream) -> std::int32_t {
    RecordingStream& self = of(stream);
    self.host_.note(self.prefix_, "open");
    require(!self.isOpen_, "opens a closed stream");
    self.position_ = 0;
    self.isRefused_ = self.host_.faultAt(Step::kOpen) != nullptr;
    self.isOpen_ = !self.isRefused_;
    return self.isOpen_ ? 77 : 0;
  };
  read = [](SSStream* stream, void* buffer, std::size_t count) {
    return of(stream).take(buffer, count);
  };
  seek = [](SSStream* stream, std::ptrdiff_t offset, std::int32_t origin) -> std::int32_t {
    return of(stream).move(offset, origin) ? -1 : 0;
  };
  tell = [](SSStream* stream) {
    RecordingStream& self = of(stream);
    self.host_.note(self.prefix_, "tell");
    require(self.isOpen_, "tell of an open stream");
    return static_cast<std::ptrdiff_t>(self.position_);
  };
  close = [](SSStream* stream) {
    RecordingStream& self = of(stream);
    self.host_.note(self.prefix_, "close");
    require(self.isOpen_ || self.isRefused_, "closes an open stream, once");
    self.isOpen_ = self.isRefused_ = false;
  };
}

// Overwrites the whole buffer, so that one that is smaller than `count` shows, and so does the use
// of bytes that did not arrive.
std::size_t RecordingStream::take(void* buffer, std::size_t count) {
  host_.note(prefix_, "read", count);
  require(isOpen_, "reads from an open stream");
  host_.largestRead_ = std::max(host_.largestRead_, count);
  if (count != 0) std::memset(buffer, kFreshBuffer, count);
  std::size_t given = std::min(count, bytes_.size() - std::min(position_, bytes_.size()));
  if (const Fault* fault = host_.faultAt(Step::kRead)) given -= std::min(given, fault->shortBy);
  if (given != 0) std::memcpy(buffer, bytes_.data() + position_, given);
  position_ += given;
  host_.bytesRead_ += given;
  return given;
}

bool RecordingStream::move(std::ptrdiff_t offset, std::int32_t origin) {
  host_.note(prefix_, "seek", offset, origin);
  require(isOpen_, "seeks in an open stream");
  require(origin == SSSeekFromStart || origin == SSSeekFromCurrent, "seeks from a known origin");
  const auto base = origin == SSSeekFromCurrent ? static_cast<std::ptrdiff_t>(position_) : 0;
  if (host_.faultAt(Step::kSeek) || offset > PTRDIFF_MAX - base || offset + base < 0) return false;
  const auto target = static_cast<std::size_t>(offset + base);
  if (!host_.seekBeyondEnd && target > bytes_.size()) return false;
  position_ = target;
  return true;
}

// In front of every block; the address sanitizer keeps the reader out of it.
struct RecordingHost::Header {
  std::uint64_t size;
  Kind kind;
  std::uint32_t unused;

  static Header* of(void* block) {
    require(block != nullptr, "no null goes back");
    auto* header = static_cast<Header*>(block) - 1;
#ifdef QPS_TEST_POISONING
    ASAN_UNPOISON_MEMORY_REGION(header, sizeof(Header));
#endif
    return header;
  }

  void* seal() {
    void* block = this + 1;
#ifdef QPS_TEST_POISONING
    ASAN_POISON_MEMORY_REGION(this, sizeof(Header));
#endif
    return block;
  }
};

RecordingHost::RecordingHost(Bytes file) : file_(*this, "", std::move(file)) {
  static_assert(sizeof(Header) % alignof(std::max_align_t) == 0);
  poison(services_.reserved0);
  poison(services_.reserved6);
  poison(services_.reserved38);
  services_.host = this;
  fillPool();
  services_.toLowerText = [](SSHostServices* services, char* text) {
    of(services).note("", "toLowerText", text);
    return (of(services).converted_ = convertCase(text, 'A', 'Z')).data();
  };
  services_.toUpperText = [](SSHostServices* services, char* text) {
    of(services).note("", "toUpperText", text);
    return (of(services).converted_ = convertCase(text, 'a', 'z')).data();
  };
  services_.loadLibrary = [](SSHostServices* services, const char* name,
                             void** handle) -> std::int32_t {
    RecordingHost& host = of(services);
    host.note("", "loadLibrary", name);
    require(std::strcmp(name, OLE_LIBRARY_NAME) == 0, "loads one library by name");
    *handle = &host;  // which a reader must not take for a library when there is none
    if (host.faultAt(Step::kLoadLibrary) || host.oleEntryPoint == nullptr) return 0;
    ++host.libraries_;
    *handle = &host.libraries_;
    return 2;
  };
  services_.getSymbol = [](SSHostServices* services, void* library, const char* symbol) -> void* {
    RecordingHost& host = of(services);
    host.note("", "getSymbol", symbol);
    require(library == &host.libraries_ && host.libraries_ != 0, "symbols of a loaded library");
    require(std::strcmp(symbol, OLE_ENTRY_POINT) == 0, "asks for one symbol");
    if (host.faultAt(Step::kGetSymbol)) return nullptr;
    return reinterpret_cast<void*>(host.oleEntryPoint);
  };
  services_.freeLibrary = [](SSHostServices* services, void* library) {
    RecordingHost& host = of(services);
    host.note("", "freeLibrary");
    require(library == &host.libraries_ && host.libraries_ != 0, "frees a loaded library");
    --host.libraries_;
  };
}

void RecordingHost::fillPool() {
  services_.pool.state = this;
  services_.pool.alloc = [](SSMemoryPool* pool, std::size_t size) {
    of(pool).note("", "alloc");
    return of(pool).allocate(size, kPoolBlocks, kFreshBlock);
  };
  services_.pool.calloc = [](SSMemoryPool* pool, std::size_t count, std::size_t size) -> void* {
    of(pool).note("", "calloc");
    if (size != 0 && count > SIZE_MAX / size) return nullptr;
    return of(pool).allocate(count * size, kPoolBlocks, 0);
  };
  services_.pool.realloc = [](SSMemoryPool* pool, void* block, std::size_t size) {
    of(pool).note("", "realloc");
    return of(pool).resize(block, size);
  };
  services_.pool.free = [](SSMemoryPool* pool, void* block) {
    of(pool).note("", "free");
    of(pool).freePoolBlock(block);
  };
}

void* RecordingHost::itemAlloc(void* context, void* block, std::size_t size, std::uint32_t flags) {
  auto& host = *static_cast<RecordingHost*>(context);
  host.note("", "itemAlloc");
  require(block == nullptr && flags == 0, "item texts are new blocks without flags");
  return host.allocate(size, kItemTexts, kFreshBlock);
}

void RecordingHost::freeItemText(char* text) {
  Header* header = Header::of(text);
  require(header->size == std::strlen(text) + 1, "an item text fills its block");
  header->seal();
  release(text, kItemTexts);
}

void* RecordingHost::allocate(std::size_t size, Kind kind, int filling) {
  require(size != 0, "no block of no bytes");
  if (faultAt(kind == kItemTexts ? Step::kItemText : Step::kPoolBlock)) return nullptr;
  if (size > PTRDIFF_MAX - sizeof(Header)) return nullptr;
  auto* header = static_cast<Header*>(std::malloc(sizeof(Header) + size));
  if (header == nullptr) return nullptr;
  *header = {size, kind, 0};
  std::memset(header + 1, filling, size);
  ++blocks_[kind];
  if (kind == kPoolBlocks) {
    poolBytes_ += size;
    peakPoolBytes_ = std::max(peakPoolBytes_, poolBytes_);
  }
  return header->seal();
}

void* RecordingHost::resize(void* block, std::size_t size) {
  Header* old = Header::of(block);
  require(old->kind == kPoolBlocks, "realloc of a block of the pool");
  const auto kept = std::min(static_cast<std::size_t>(old->size), size);
  old->seal();
  void* moved = allocate(size, kPoolBlocks, kFreshBlock);
  if (moved == nullptr) return nullptr;
  std::memcpy(moved, block, kept);
  freePoolBlock(block);
  return moved;
}

void RecordingHost::release(void* block, Kind kind) {
  Header* header = Header::of(block);
  require(header->kind == kind, "a block goes back to where it came from, once");
  header->kind = kReleased;
  --blocks_[kind];
  if (kind == kPoolBlocks) poolBytes_ -= static_cast<std::size_t>(header->size);
  std::free(header);
}

void RecordingHost::fail(Fault fault) {
  faults_ = {fault};
  faultMet_ = false;
  stepCalls_.fill(0);
}

const Fault* RecordingHost::faultAt(Step step) {
  const std::size_t call = ++stepCalls_[static_cast<std::size_t>(step)];
  for (const Fault& fault : faults_) {
    if (fault.step != step || call < fault.nth || (call > fault.nth && !fault.forGood)) continue;
    faultMet_ = true;
    return &fault;
  }
  return nullptr;
}

std::string RecordingHost::state() const {
  const struct {
    std::size_t count;
    const char* what;
  } kLeft[] = {{blocks_[kPoolBlocks], "pool blocks"},
               {blocks_[kItemTexts], "item texts"},
               {file_.isOpen(), "file open"},
               {fake_.isOpen, "container open"},
               {fake_.objectTaken, "stream object not released"},
               {libraries_, "libraries loaded"}};
  std::string found;
  for (const auto& [count, what] : kLeft) {
    if (count != 0) found += (found.empty() ? "" : "; ") + std::to_string(count) + " " + what;
  }
  return found.empty() ? "clean" : found;
}

}  // namespace qps::test
