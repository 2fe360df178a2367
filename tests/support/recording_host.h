// SPDX-License-Identifier: MIT
//
// A host in memory: the services table, a stream over bytes and the allocator of item texts. It
// counts what is outstanding, logs calls, can fail any of them, and notes every call that breaks
// the contract of qpsreader/host_tables.h as a violation. It fakes the compound-document library
// too. Nothing here needs a test framework: fuzz targets and benchmarks use it as well.
#ifndef QPSREADER_TESTS_RECORDING_HOST_H
#define QPSREADER_TESTS_RECORDING_HOST_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include <qpsreader/host_tables.h>
#include <qpsreader/ole_interface.h>
#include "tests/support/notebook_builder.h"

namespace qps::test {

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
  size_t nth = 1;
  bool forGood = false;
  size_t shortBy = SIZE_MAX;
};

class RecordingHost;

// A stream over bytes that knows whether it is open.
class RecordingStream {
 public:
  RecordingStream(RecordingHost& host, std::string name, Bytes bytes);
  RecordingStream(const RecordingStream&) = delete;
  RecordingStream& operator=(const RecordingStream&) = delete;

  SSStream* table() { return &table_; }
  void open(bool isOpen) { isOpen_ = isOpen; }
  bool isOpen() const { return isOpen_; }
  Bytes& bytes() { return bytes_; }

 private:
  friend class RecordingHost;
  static RecordingStream& of(SSStream* table);
  bool mayCall(const char* operation);

  SSStream table_{};
  RecordingHost& host_;
  std::string name_;
  Bytes bytes_;
  size_t position_ = 0;
  bool isOpen_ = false;
  bool isRefused_ = false;  // by a failed open, after which one close may come
};

class RecordingHost {
 public:
  explicit RecordingHost(Bytes file);
  ~RecordingHost();
  RecordingHost(const RecordingHost&) = delete;
  RecordingHost& operator=(const RecordingHost&) = delete;

  SSHostServices* services() { return &services_; }
  SSStream* stream() { return file_.table(); }
  RecordingStream& file() { return file_; }
  void* itemContext() { return this; }
  static void* itemAlloc(void* context, void* block, size_t size, uint32_t flags);
  static RecordingHost& of(SSHostServices* services);
  static RecordingHost& of(SSStream* stream);

  // The text fills its block.
  void freeItemText(char* text);
  void freePoolBlock(void* block) { release(poolBlocks_, block, "pool block"); }

  // Faults. A fault stays until the next one is set.
  void fail(Fault fault);
  void clearFault() { hasFault_ = false; }
  bool faultMet() const { return faultMet_; }
  bool shouldFail(Step step);
  size_t calls(Step step) const { return stepCalls_[static_cast<size_t>(step)]; }

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

  const std::vector<std::string>& violations() const { return violations_; }
  void violate(const std::string& what);

  size_t poolBlocks() const { return poolBlocks_.size(); }
  size_t itemTexts() const { return itemTexts_.size(); }
  size_t hostCalls() const { return hostCalls_; }
  size_t bytesRead() const { return bytesRead_; }
  size_t largestRead() const { return largestRead_; }
  size_t peakPoolBytes() const { return peakPoolBytes_; }

  // "clean", or all that is open, loaded or allocated, and every violation.
  std::string state() const;

 private:
  friend class RecordingStream;
  friend struct FakeLibrary;
  using Blocks = std::unordered_map<void*, size_t>;

  void note(std::string_view call, std::string_view detail = {}, std::string_view prefix = {});
  void* allocate(Blocks& blocks, size_t size, int filling);
  void release(Blocks& blocks, void* block, const char* what);

  SSHostServices services_{};
  RecordingStream file_;
  std::array<size_t, kAllSteps.size()> stepCalls_{};
  Fault fault_;
  bool hasFault_ = false;
  bool faultMet_ = false;
  Blocks poolBlocks_;
  Blocks itemTexts_;
  size_t poolBytes_ = 0;
  size_t peakPoolBytes_ = 0;
  size_t hostCalls_ = 0;
  size_t bytesRead_ = 0;
  size_t largestRead_ = 0;
  int libraries_ = 0;
  std::string converted_;  // the last result of toLowerText or toUpperText
  std::map<std::string, Bytes, std::less<>> containerStreams_;
  bool containerOpen_ = false;
  bool objectTaken_ = false;
  std::string openStreamName_;
  std::unique_ptr<RecordingStream> inner_;
  std::vector<std::string> violations_;
};

}  // namespace qps::test

#endif  // QPSREADER_TESTS_RECORDING_HOST_H
