// SPDX-License-Identifier: MIT
//
// A host in memory for tests and fuzz targets: the services table, a stream over bytes and the
// allocator of item texts. It counts what is outstanding, can log its calls and fail any of them,
// and fakes the compound-document library. The first call that breaks the contract of
// qpsreader/host_tables.h ends the process: its stack then shows who made it. Nothing here needs a
// test framework.
#ifndef QPSREADER_TESTS_RECORDING_HOST_H
#define QPSREADER_TESTS_RECORDING_HOST_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include <qpsreader/host_tables.h>
#include <qpsreader/ole_interface.h>
#include "tests/support/notebook_builder.h"

namespace qps::test {

// Says what was broken, and while what was running, and aborts.
[[noreturn]] void broken(const char* promise);
inline void require(bool holds, const char* promise) {
  if (!holds) broken(promise);
}
// `what` must stay valid; null when there is nothing to say.
void setRunning(const char* what);

// What can be made to fail.
enum class Step : unsigned {
  kOpen,
  kRead,  // of the file or of the stream in the fake container
  kSeek,
  kPoolBlock,  // alloc, calloc or realloc
  kItemText,
  kLoadLibrary,
  kGetSymbol,
  kOpenContainer,  // the steps of the fake library
  kOpenStream,
  kStreamObject,
};
inline constexpr std::array kAllSteps = {
    Step::kOpen,       Step::kRead,        Step::kSeek,      Step::kPoolBlock,
    Step::kItemText,   Step::kLoadLibrary, Step::kGetSymbol, Step::kOpenContainer,
    Step::kOpenStream, Step::kStreamObject};
const char* nameOf(Step step);

// The nth call of a step fails, counted from 1 and from the moment the fault is set; with `forGood`
// all later ones do. A read gives `shortBy` bytes fewer than it could, down to none.
struct Fault {
  Step step = Step::kOpen;
  std::size_t nth = 1;
  bool forGood = false;
  std::size_t shortBy = SIZE_MAX;
};

class RecordingHost;

// A stream over bytes that knows whether it is open.
class RecordingStream : public SSStream {
 public:
  // `prefix` stands before its calls in the log.
  RecordingStream(RecordingHost& host, const char* prefix, Bytes bytes, bool isOpen = false);
  RecordingStream(const RecordingStream&) = delete;
  RecordingStream& operator=(const RecordingStream&) = delete;

  RecordingHost& host() { return host_; }
  bool isOpen() const { return isOpen_; }
  Bytes& bytes() { return bytes_; }
  const Bytes& bytes() const { return bytes_; }

 private:
  static RecordingStream& of(SSStream* stream) { return *static_cast<RecordingStream*>(stream); }
  std::size_t take(void* buffer, std::size_t count);
  bool move(std::ptrdiff_t offset, std::int32_t origin);

  RecordingHost& host_;
  const char* prefix_;
  Bytes bytes_;
  std::size_t position_ = 0;
  bool isOpen_;
  bool isRefused_ = false;  // by a failed open, after which one close may come
};

class RecordingHost {
 public:
  explicit RecordingHost(Bytes file);
  RecordingHost(const RecordingHost&) = delete;
  RecordingHost& operator=(const RecordingHost&) = delete;

  SSHostServices* services() { return &services_; }
  SSStream* stream() { return &file_; }
  RecordingStream& file() { return file_; }
  const RecordingStream& file() const { return file_; }
  void* itemContext() { return this; }
  static void* itemAlloc(void* context, void* block, std::size_t size, std::uint32_t flags);

  // The text fills its block.
  void freeItemText(char* text);
  void freePoolBlock(void* block) { release(block, kPoolBlocks); }

  // Faults stay until the next call of fail.
  void fail(Fault fault);
  void failToo(Fault fault) { faults_.push_back(fault); }
  void clearFault() { faults_.clear(); }
  bool faultMet() const { return faultMet_; }
  std::size_t calls(Step step) const { return stepCalls_[static_cast<std::size_t>(step)]; }

  // The library that loadLibrary("zbolefio.dll") finds: none when null.
  GetOLEInterfaceFunction oleEntryPoint = nullptr;
  // Makes that library the fake one, whose container holds these streams whatever the file holds.
  void useFakeContainer(std::map<std::string, Bytes, std::less<>> streams);

  // Whether a seek to beyond the end succeeds, as with most files, or fails.
  bool seekBeyondEnd = false;

  // Calls as "open", "read 4", "seek -8 1", "close", "loadLibrary zbolefio.dll", "alloc", "free",
  // "ole openStream PerfectOffice_MAIN"; those of the container's stream begin with "inner ".
  bool logging = false;
  std::vector<std::string> log;

  std::size_t poolBlocks() const { return blocks_[kPoolBlocks]; }
  std::size_t hostCalls() const { return hostCalls_; }
  std::size_t bytesRead() const { return bytesRead_; }
  std::size_t largestRead() const { return largestRead_; }
  std::size_t peakPoolBytes() const { return peakPoolBytes_; }

  // "clean", or all that is open, loaded or allocated.
  std::string state() const;

 private:
  friend class RecordingStream;
  friend struct FakeLibrary;
  enum Kind : std::uint32_t { kPoolBlocks, kItemTexts, kReleased };
  struct Header;
  struct Services : SSHostServices {
    RecordingHost* host;
  };

  static RecordingHost& of(SSHostServices* services) {
    return *static_cast<Services*>(services)->host;
  }
  static RecordingHost& of(SSMemoryPool* pool) { return *static_cast<RecordingHost*>(pool->state); }
  void fillPool();
  void* allocate(std::size_t size, Kind kind, int filling);
  void* resize(void* block, std::size_t size);
  void release(void* block, Kind kind);
  const Fault* faultAt(Step step);  // counts the call; null when it shall succeed

  template <typename... Details>
  void note(const char* prefix, const char* call, const Details&... details) {
    ++hostCalls_;
    if (!logging) return;
    std::ostringstream line;
    line << prefix << call;
    ((line << ' ' << details), ...);
    log.push_back(line.str());
  }

  Services services_{};
  RecordingStream file_;
  std::array<std::size_t, kAllSteps.size()> stepCalls_{};
  std::vector<Fault> faults_;
  bool faultMet_ = false;
  std::array<std::size_t, 2> blocks_{};  // outstanding, by Kind
  std::size_t poolBytes_ = 0;
  std::size_t peakPoolBytes_ = 0;
  std::size_t hostCalls_ = 0;
  std::size_t bytesRead_ = 0;
  std::size_t largestRead_ = 0;
  std::size_t libraries_ = 0;
  std::string converted_;  // the last result of toLowerText or toUpperText

  struct FakeContainer {
    std::map<std::string, Bytes, std::less<>> streams;
    bool isOpen = false;
    bool objectTaken = false;
    std::string openStream;
    std::unique_ptr<RecordingStream> inner;
  } fake_;
};

}  // namespace qps::test

#endif  // QPSREADER_TESTS_RECORDING_HOST_H
