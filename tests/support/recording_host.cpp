// SPDX-License-Identifier: MIT
//
// The host tables are filled with captureless lambdas; slot 0, which the reader never reads, leads
// back to the object. Every other reserved slot holds an address that must not be called.
#include "tests/support/recording_host.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace qps::test {

namespace {

template <size_t N>
void poison(void* (&slots)[N]) {
  std::fill(std::begin(slots), std::end(slots), reinterpret_cast<void*>(uintptr_t{1}));
}

std::string number(auto value) {
  return std::to_string(value);
}

std::string convertCase(std::string text, char first, char last) {
  for (char& c : text) {
    if (c >= first && c <= last) c = static_cast<char>(c ^ 0x20);
  }
  return text;
}

}  // namespace

const char* nameOf(Step step) {
  constexpr const char* kNames[] = {"open",       "read",        "seek",      "pool block",
                                    "item text",  "loadLibrary", "getSymbol", "openContainer",
                                    "openStream", "streamObject"};
  return kNames[static_cast<size_t>(step)];
}

// RecordingStream

RecordingStream& RecordingStream::of(SSStream* table) {
  return *static_cast<RecordingStream*>(table->reserved0[0]);
}

bool RecordingStream::mayCall(const char* operation) {
  host_.note(operation, {}, name_);
  if (!isOpen_) host_.violate(name_ + operation + " on a closed stream");
  return isOpen_;
}

RecordingStream::RecordingStream(RecordingHost& host, std::string name, Bytes bytes)
    : host_(host), name_(std::move(name)), bytes_(std::move(bytes)) {
  poison(table_.reserved0);
  table_.reserved0[0] = this;
  table_.reserved10 = reinterpret_cast<void*>(uintptr_t{1});
  table_.open = [](SSStream* stream) -> int32_t {
    RecordingStream& self = of(stream);
    self.host_.note("open", {}, self.name_);
    if (self.isOpen_) self.host_.violate(self.name_ + "open of an open stream");
    self.position_ = 0;
    self.isRefused_ = self.host_.shouldFail(Step::kOpen);
    self.isOpen_ = !self.isRefused_;
    return self.isOpen_ ? 77 : 0;
  };
  table_.read = [](SSStream* stream, void* buffer, size_t count) -> size_t {
    RecordingStream& self = of(stream);
    if (!self.mayCall(self.host_.logging ? ("read " + number(count)).c_str() : "read")) return 0;
    self.host_.largestRead_ = std::max(self.host_.largestRead_, count);
    size_t given =
        std::min(count, self.bytes_.size() - std::min(self.position_, self.bytes_.size()));
    if (self.host_.shouldFail(Step::kRead)) given -= std::min(given, self.host_.fault_.shortBy);
    if (given != 0) std::memcpy(buffer, self.bytes_.data() + self.position_, given);
    self.position_ += given;
    self.host_.bytesRead_ += given;
    return given;
  };
  table_.seek = [](SSStream* stream, ptrdiff_t offset, int32_t origin) -> int32_t {
    RecordingStream& self = of(stream);
    const std::string detail =
        self.host_.logging ? "seek " + number(offset) + " " + number(origin) : "seek";
    if (!self.mayCall(detail.c_str()) || self.host_.shouldFail(Step::kSeek)) return 0;
    if (origin != SSSeekFromStart && origin != SSSeekFromCurrent) {
      self.host_.violate("seek from origin " + number(origin));
      return 0;
    }
    const ptrdiff_t target =
        offset + (origin == SSSeekFromCurrent ? static_cast<ptrdiff_t>(self.position_) : 0);
    if (target < 0 ||
        (!self.host_.seekBeyondEnd && static_cast<size_t>(target) > self.bytes_.size())) {
      return 0;
    }
    self.position_ = static_cast<size_t>(target);
    return -1;
  };
  table_.tell = [](SSStream* stream) -> ptrdiff_t {
    RecordingStream& self = of(stream);
    return self.mayCall("tell") ? static_cast<ptrdiff_t>(self.position_) : -1;
  };
  table_.close = [](SSStream* stream) {
    RecordingStream& self = of(stream);
    self.host_.note("close", {}, self.name_);
    if (!self.isOpen_ && !self.isRefused_)
      self.host_.violate(self.name_ + "close of a closed stream");
    self.isOpen_ = self.isRefused_ = false;
  };
}

// RecordingHost

RecordingHost& RecordingHost::of(SSHostServices* services) {
  return *static_cast<RecordingHost*>(services->reserved0[0]);
}

RecordingHost& RecordingHost::of(SSStream* stream) {
  return RecordingStream::of(stream).host_;
}

RecordingHost::RecordingHost(Bytes file) : file_(*this, "", std::move(file)) {
  poison(services_.reserved0);
  poison(services_.reserved6);
  poison(services_.reserved38);
  services_.reserved0[0] = this;
  services_.pool.state = this;
  services_.pool.alloc = [](SSMemoryPool* pool, size_t size) -> void* {
    auto& host = *static_cast<RecordingHost*>(pool->state);
    host.note("alloc");
    return host.shouldFail(Step::kPoolBlock) ? nullptr
                                             : host.allocate(host.poolBlocks_, size, 0x5C);
  };
  services_.pool.calloc = [](SSMemoryPool* pool, size_t count, size_t size) -> void* {
    auto& host = *static_cast<RecordingHost*>(pool->state);
    host.note("calloc");
    const bool overflows = size != 0 && count > SIZE_MAX / size;
    return host.shouldFail(Step::kPoolBlock) || overflows
               ? nullptr
               : host.allocate(host.poolBlocks_, count * size, 0);
  };
  services_.pool.realloc = [](SSMemoryPool* pool, void* block, size_t size) -> void* {
    auto& host = *static_cast<RecordingHost*>(pool->state);
    host.note("realloc");
    const auto old = host.poolBlocks_.find(block);
    if (old == host.poolBlocks_.end()) {
      host.violate("realloc of a block that is not the pool's");
      return nullptr;
    }
    if (host.shouldFail(Step::kPoolBlock)) return nullptr;
    void* moved = host.allocate(host.poolBlocks_, size, 0x5C);
    if (moved != nullptr) {
      const auto oldSize = host.poolBlocks_.at(block);
      std::memcpy(moved, block, std::min(oldSize, size));
      host.freePoolBlock(block);
    }
    return moved;
  };
  services_.pool.free = [](SSMemoryPool* pool, void* block) {
    auto& host = *static_cast<RecordingHost*>(pool->state);
    host.note("free");
    host.freePoolBlock(block);
  };
  services_.toLowerText = [](SSHostServices* services, char* text) -> char* {
    RecordingHost& host = of(services);
    host.note("toLowerText", text);
    host.converted_ = convertCase(text, 'A', 'Z');
    return host.converted_.data();
  };
  services_.toUpperText = [](SSHostServices* services, char* text) -> char* {
    RecordingHost& host = of(services);
    host.note("toUpperText", text);
    host.converted_ = convertCase(text, 'a', 'z');
    return host.converted_.data();
  };
  services_.loadLibrary = [](SSHostServices* services, const char* name, void** handle) -> int32_t {
    RecordingHost& host = of(services);
    host.note("loadLibrary", name);
    if (host.shouldFail(Step::kLoadLibrary) || host.oleEntryPoint == nullptr ||
        std::strcmp(name, OLE_LIBRARY_NAME) != 0) {
      *handle = &host;  // which a reader must not take for a library
      return 0;
    }
    ++host.libraries_;
    *handle = &host.libraries_;
    return 2;
  };
  services_.getSymbol = [](SSHostServices* services, void* library, const char* symbol) -> void* {
    RecordingHost& host = of(services);
    host.note("getSymbol", symbol);
    if (library != &host.libraries_ || host.libraries_ == 0)
      host.violate("getSymbol in a library that is not loaded");
    return host.shouldFail(Step::kGetSymbol) || std::strcmp(symbol, OLE_ENTRY_POINT) != 0
               ? nullptr
               : reinterpret_cast<void*>(host.oleEntryPoint);
  };
  services_.freeLibrary = [](SSHostServices* services, void* library) {
    RecordingHost& host = of(services);
    host.note("freeLibrary");
    if (library != &host.libraries_ || host.libraries_ == 0) {
      host.violate("freeLibrary of a library that is not loaded");
      return;
    }
    --host.libraries_;
  };
}

RecordingHost::~RecordingHost() {
  for (const Blocks* blocks : {&poolBlocks_, &itemTexts_}) {
    for (const auto& [block, size] : *blocks)
      std::free(block);
  }
}

void* RecordingHost::itemAlloc(void* context, void* block, size_t size, uint32_t flags) {
  auto& host = *static_cast<RecordingHost*>(context);
  host.note("itemAlloc");
  if (block != nullptr || flags != 0) host.violate("itemAlloc with a block or with flags");
  return host.shouldFail(Step::kItemText) ? nullptr : host.allocate(host.itemTexts_, size, 0x5C);
}

void RecordingHost::freeItemText(char* text) {
  const auto found = itemTexts_.find(text);
  if (found != itemTexts_.end() && found->second != std::strlen(text) + 1)
    violate("an item text that does not fill its block");
  release(itemTexts_, text, "item text");
}

void* RecordingHost::allocate(Blocks& blocks, size_t size, int filling) {
  if (size == 0) violate("a block of no bytes");
  void* block = std::malloc(size);
  if (block == nullptr) return nullptr;
  std::memset(block, filling, size);
  blocks.emplace(block, size);
  if (&blocks == &poolBlocks_) {
    poolBytes_ += size;
    peakPoolBytes_ = std::max(peakPoolBytes_, poolBytes_);
  }
  return block;
}

void RecordingHost::release(Blocks& blocks, void* block, const char* what) {
  const auto found = blocks.find(block);
  if (found == blocks.end()) {
    violate(std::string("free of what is no outstanding ") + what);
    return;
  }
  if (&blocks == &poolBlocks_) poolBytes_ -= found->second;
  blocks.erase(found);
  std::free(block);
}

void RecordingHost::fail(Fault fault) {
  fault_ = fault;
  hasFault_ = true;
  faultMet_ = false;
  stepCalls_.fill(0);
}

bool RecordingHost::shouldFail(Step step) {
  const size_t call = ++stepCalls_[static_cast<size_t>(step)];
  const bool fails = hasFault_ && step == fault_.step &&
                     (call == fault_.nth || (fault_.forGood && call > fault_.nth));
  faultMet_ = faultMet_ || fails;
  return fails;
}

void RecordingHost::note(std::string_view call, std::string_view detail, std::string_view prefix) {
  ++hostCalls_;
  if (logging) {
    log.push_back(std::string(prefix).append(call));
    if (!detail.empty()) log.back().append(" ").append(detail);
  }
}

void RecordingHost::violate(const std::string& what) {
  violations_.push_back(what);
}

std::string RecordingHost::state() const {
  std::string found;
  const auto add = [&found](bool isLeft, const std::string& what) {
    if (isLeft) found += (found.empty() ? "" : "; ") + what;
  };
  add(!poolBlocks_.empty(), number(poolBlocks_.size()) + " pool blocks");
  add(!itemTexts_.empty(), number(itemTexts_.size()) + " item texts");
  add(file_.isOpen(), "file open");
  add(containerOpen_, "container open");
  add(objectTaken_, "stream object not released");
  add(libraries_ != 0, number(libraries_) + " libraries loaded");
  for (const std::string& violation : violations_)
    add(true, violation);
  return found.empty() ? "clean" : found;
}

// The fake library: the host is the container handle.

struct FakeLibrary {
  static RecordingHost& of(void* container) { return *static_cast<RecordingHost*>(container); }

  static void* openContainer(SSStream* file, SSMemoryPool* pool) {
    RecordingHost& host = RecordingHost::of(file);
    host.note("ole openContainer");
    if (pool != &host.services_.pool || host.containerOpen_)
      host.violate("openContainer with another pool, or twice");
    if (file->open(file) == 0) return nullptr;
    if (host.shouldFail(Step::kOpenContainer)) {
      file->close(file);
      return nullptr;
    }
    host.containerOpen_ = true;
    return &host;
  }

  static int32_t openStream(void* container, const char* name) {
    RecordingHost& host = of(container);
    host.note("ole openStream", name);
    if (host.shouldFail(Step::kOpenStream) || !host.containerStreams_.contains(name)) return 0;
    host.openStreamName_ = name;
    return 3;
  }

  static SSStream* streamObject(void* container) {
    RecordingHost& host = of(container);
    host.note("ole streamObject");
    host.objectTaken_ = true;
    const auto found = host.containerStreams_.find(host.openStreamName_);
    if (host.shouldFail(Step::kStreamObject) || found == host.containerStreams_.end())
      return nullptr;
    host.inner_ = std::make_unique<RecordingStream>(host, "inner ", found->second);
    host.inner_->open(true);
    return host.inner_->table();
  }

  static void releaseStreamObject(void* container) {
    RecordingHost& host = of(container);
    host.note("ole releaseStreamObject");
    if (!host.objectTaken_) host.violate("releaseStreamObject without streamObject");
    host.objectTaken_ = false;
    host.inner_.reset();
  }

  static void closeStream(void* container, const char* name) {
    RecordingHost& host = of(container);
    host.note("ole closeStream", name);
    if (host.openStreamName_ != name || host.openStreamName_.empty())
      host.violate("closeStream of a stream that is not open");
    host.openStreamName_.clear();
  }

  static void closeContainer(void* container) {
    RecordingHost& host = of(container);
    host.note("ole closeContainer");
    if (!host.containerOpen_) {
      host.violate("closeContainer of a closed container");
      return;
    }
    host.containerOpen_ = false;
    host.file_.table()->close(host.file_.table());
  }

  static void fill(OLEInterface* table) {
    *table = {};
    table->openContainer = openContainer;
    table->openStream = openStream;
    table->streamObject = streamObject;
    table->releaseStreamObject = releaseStreamObject;
    table->closeStream = closeStream;
    table->closeContainer = closeContainer;
  }
};

void RecordingHost::useFakeContainer(std::map<std::string, Bytes, std::less<>> streams) {
  containerStreams_ = std::move(streams);
  oleEntryPoint = FakeLibrary::fill;
}

}  // namespace qps::test
