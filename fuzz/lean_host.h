// SPDX-License-Identifier: MIT
//
// A host in memory for fuzzing: as strict as tests/support/recording_host, and fast. It keeps no
// log and no maps; blocks carry their size and their kind in front of them. The first broken
// promise ends the process. Any two of its calls can be made to fail.
#ifndef QPSREADER_FUZZ_LEAN_HOST_H
#define QPSREADER_FUZZ_LEAN_HOST_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include <qpsreader/host_tables.h>
#include <qpsreader/ole_interface.h>

namespace qps::fuzz {

// Says what was broken, and while what was running, and aborts.
[[noreturn]] void fail(const char* promise);
inline void require(bool holds, const char* promise) {
  if (!holds) fail(promise);
}

// `what` must stay valid; null when there is nothing to say.
void setRunning(const char* what);

enum class Step : uint8_t {
  kPoolBlock,
  kItemText,
  kOpen,
  kRead,
  kSeek,
  kLoadLibrary,
  kGetSymbol,
  kSteps,
};

// The nth call of a step fails, counted from 1; with `forGood` all later ones do. A read gives
// `shortBy` bytes fewer than it could.
struct Fault {
  Step step = Step::kSteps;  // none
  uint32_t nth = 1;
  bool forGood = false;
  size_t shortBy = SIZE_MAX;
};

// What the host was asked for.
struct Work {
  uint64_t calls = 0;
  uint64_t bytesRead = 0;
};

class LeanHost {
 public:
  // `file` must outlive the host. The library that loadLibrary finds is the one linked in.
  explicit LeanHost(std::span<const uint8_t> file);
  LeanHost(const LeanHost&) = delete;
  LeanHost& operator=(const LeanHost&) = delete;

  SSHostServices* services() { return &services_; }
  SSMemoryPool* pool() { return &services_.pool; }
  SSStream* stream() { return &stream_; }
  static void* itemAlloc(void* host, void* block, size_t size, uint32_t flags);
  void freeItemText(void* text) { release(text, Kind::kItemText); }
  void freePoolText(void* text) { release(text, Kind::kPoolBlock); }

  std::array<Fault, 2> faults;
  void failFromNowOn(Step step);
  bool seekBeyondEnd = false;  // whether a seek to beyond the end succeeds

  std::span<const uint8_t> file() const { return file_; }
  const Work& work() const { return work_; }
  size_t largestRead() const { return largestRead_; }
  uint64_t peakPoolBytes() const { return peakPoolBytes_; }
  bool isOpen() const { return isOpen_; }

  // All blocks are back, the stream is closed and no library is loaded.
  void requireAtRest() const;

 private:
  enum class Kind : uint32_t { kPoolBlock = 0x504F4F4C, kItemText = 0x54455854 };
  struct Header;

  static LeanHost& of(SSMemoryPool* pool) { return *static_cast<LeanHost*>(pool->state); }
  static LeanHost& of(SSHostServices* services) { return of(&services->pool); }
  static LeanHost& of(SSStream* stream);

  void fillServices();
  void fillStream();
  bool shouldFail(Step step);
  void* allocate(size_t size, Kind kind, int filling);
  void release(void* block, Kind kind);
  void* resize(void* block, size_t size);
  size_t read(void* buffer, size_t count);
  bool seek(ptrdiff_t offset, int32_t origin);

  struct Stream : SSStream {
    LeanHost* host;
  };

  std::span<const uint8_t> file_;
  SSHostServices services_{};
  Stream stream_{};
  size_t position_ = 0;
  bool isOpen_ = false;
  bool isRefused_ = false;  // by a failed open, after which one close may come
  int libraries_ = 0;
  std::array<uint32_t, static_cast<size_t>(Step::kSteps)> stepCalls_{};
  Work work_;
  size_t largestRead_ = 0;
  uint64_t poolBlocks_ = 0;
  uint64_t itemTexts_ = 0;
  uint64_t poolBytes_ = 0;
  uint64_t peakPoolBytes_ = 0;
};

}  // namespace qps::fuzz

#endif  // QPSREADER_FUZZ_LEAN_HOST_H
