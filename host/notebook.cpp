// SPDX-License-Identifier: MIT
//
// Notebook over the reader's operations. One NotebookState holds what all parts of a notebook
// share: bytes, pool, services and the list of worksheets. Ranges keep it alive; arenas keep the
// pool alive. Each range has a stream and a reader handle of its own.
#include <qpsreader/host/notebook.hpp>

#include <algorithm>
#include <array>
#include <cstring>
#include <new>
#include <system_error>
#include <utility>

#include <qpsreader/qps_reader.h>
#include <qpsreader/worksheet_list.h>
#include "host/diagnosis.hpp"
#include "host/heap_pool.hpp"
#include "host/host_services.hpp"
#include "host/notebook_bytes.hpp"
#include "host/record_source.hpp"
#include "host/salvage.hpp"

namespace qps {
namespace {

struct CloseReader {
  void operator()(QPSReader* reader) const { QPSCloseReader(reader); }
};
using ReaderHandle = std::unique_ptr<QPSReader, CloseReader>;

struct CloseSheet {
  void operator()(QPSSheet* sheet) const { QPSCloseSheet(sheet); }
};
using SheetHandle = std::unique_ptr<QPSSheet, CloseSheet>;

// Larger files are read in blocks; under a memory limit, so are those that would take much of it.
std::uint64_t mostInMemory(const OpenOptions& options) {
  constexpr std::uint64_t kMost = std::uint64_t{64} << 20;
  return options.memoryLimit == 0 ? kMost : std::min<std::uint64_t>(kMost, options.memoryLimit / 4);
}

struct FreeBlock {
  HeapPool* pool = nullptr;
  void operator()(std::byte* block) const { pool->free(block); }
};
using PoolBlock = std::unique_ptr<std::byte, FreeBlock>;

PoolBlock allocate(HeapPool& pool, std::size_t size) {
  return PoolBlock(static_cast<std::byte*>(pool.allocate(size)), FreeBlock{&pool});
}

// Whether it has records that begin as a notebook's do.
bool mayBeNotebook(const RecordSource& source) {
  if (source.status() != RecordSource::Status::kOpen) return false;
  std::array<unsigned char, 6> begin{};
  SSStream& records = source.records();
  const std::size_t got = records.read(&records, begin.data(), begin.size());
  return fileKindOf({begin.data(), got}) == FileKind::kPlainNotebook && source.rewind();
}

// All bytes of the records, `size` of them; null when the pool has no room.
PoolBlock readAll(const RecordSource& source, HeapPool& pool, std::size_t& size) {
  constexpr std::size_t kFirst = std::size_t{64} << 10;
  constexpr std::size_t kMost = 0xFFFFFFFFu;  // the reader's offsets have 32 bits
  if (!source.rewind()) return nullptr;
  SSStream& records = source.records();
  PoolBlock block(nullptr, FreeBlock{&pool});
  for (std::size_t room = kFirst; room <= kMost; room *= 2) {
    void* const larger = pool.resize(block.get(), room);
    if (larger == nullptr) return nullptr;
    static_cast<void>(block.release());
    block.reset(static_cast<std::byte*>(larger));
    size += records.read(&records, block.get() + size, room - size);
    if (size < room) return block;
    if (room > kMost / 2) break;
  }
  return nullptr;
}

// Empty for an empty path, and for one that cannot be told: every one on a system without files.
std::filesystem::path absoluteFolder([[maybe_unused]] const std::filesystem::path& folder) {
#if defined(__wasm__)
  return {};
#else
  std::error_code failed;
  return std::filesystem::absolute(folder, failed);
#endif
}

}  // namespace

struct NotebookState {
  explicit NotebookState(const OpenOptions& options)
      : pool(std::make_shared<HeapPool>(options.memoryLimit)),
        services(*pool, absoluteFolder(options.libraryFolder)),
        bytes(*pool, mostInMemory(options)),
        salvages(options.salvage) {}
  NotebookState(const NotebookState&) = delete;
  NotebookState& operator=(const NotebookState&) = delete;
  ~NotebookState() { pool->free(sheets.data()); }

  std::optional<Error> list();
  std::optional<Error> repair();
  bool keepSheets(const SSWorkSheetList& list);
  const std::optional<Error>& findDamageOnce();

  std::shared_ptr<HeapPool> pool;
  HostServices services;
  NotebookBytes bytes;
  bool salvages;
  std::optional<Salvage> salvaged;       // of a damaged notebook: what the bytes are made of now
  std::optional<NotebookStream> stream;  // for the listing and the diagnosis
  ReaderHandle reader;                   // owns the worksheet table, and with it the sheets' names
  std::span<Sheet> sheets;               // a pool block
  NotebookFacts facts;
  std::optional<std::optional<Error>> damage;  // known once somebody asked
  std::optional<Error> suspicion;              // at the same time
};

// Lists the worksheets and reads the facts, once the bytes are there.
std::optional<Error> NotebookState::list() {
  if (bytes.empty()) return Error{Reason::kEmpty, "the file is empty"};
  if (salvages)
    if (auto failure = repair()) return failure;
  SSStream& file = stream.emplace(bytes).table();
  reader.reset(QPSAllocateReader(nullptr, nullptr, &file, &services, nullptr, nullptr));
  if (!reader) return memoryLimitError();

  SSWorkSheetList list{};
  const bool listed = QPSGetWorkSheetInfo(reader.get(), &list, 0) != 0;
  if (auto failure = bytes.readError()) return failure;
  if (!listed && salvaged) return *damage;
  if (!listed) return diagnoseListing(file, services);
  if (pool->limitHit() || !keepSheets(list)) return memoryLimitError();

  auto found = readFacts(file, services);
  if (!found) return found.error();
  const NotebookFacts damaged = std::exchange(facts, *found);
  if (salvaged) {
    facts.kind = damaged.kind;
    facts.containerStream = damaged.containerStream;
  }
  return std::nullopt;
}

// Puts in the place of damaged bytes the records that are left of them. What is wrong with bytes
// that are no notebook's, the listing finds out.
std::optional<Error> NotebookState::repair() {
  SSStream& file = stream.emplace(bytes).table();
  std::size_t size = 0;
  PoolBlock records;
  {
    RecordSource source(file, services);
    if (!mayBeNotebook(source) || isWholeNotebook(source.records())) return std::nullopt;
    if (auto failure = bytes.readError()) return failure;
    records = readAll(source, *pool, size);
    if (!records) return memoryLimitError();
    facts.containerStream = source.streamName();
  }
  const bool isPlain = *facts.containerStream == '\0';
  facts.kind = isPlain ? FileKind::kPlainNotebook : FileKind::kCompoundNotebook;
  damage = findDamage(file, services);
  if (!*damage) *damage = Error{Reason::kDamaged, "damaged: it has records that no notebook has"};

  salvaged = salvage({records.get(), size});
  const std::string lost = salvaged->lostBytes();
  if (!lost.empty()) (*damage)->message += "; " + lost;
  const std::size_t repairedBytes = salvaged->repairedBytes();
  PoolBlock repaired = allocate(*pool, repairedBytes);
  if (!repaired) return memoryLimitError();
  salvaged->repair({records.get(), size}, repaired.get());
  stream.reset();
  bytes.replace(repaired.release(), repairedBytes);
  return std::nullopt;
}

bool NotebookState::keepSheets(const SSWorkSheetList& list) {
  void* const block = pool->allocateZeroed(list.count, sizeof(Sheet));
  if (block == nullptr) return false;
  auto* const kept = static_cast<Sheet*>(block);
  std::uint32_t count = 0;
  for (const SSWorkSheetEntry& entry : std::span(list.entries, list.count)) {
    if (entry.typeFlags == 0) continue;  // counted by the file but not described
    const std::uint32_t offset =
        salvaged ? salvaged->originalOffset(entry.startOffset) : entry.startOffset;
    ::new (kept + count) Sheet{.index = count, .startOffset = offset, .name = entry.name};
    ++count;
  }
  sheets = {kept, count};
  return true;
}

const std::optional<Error>& NotebookState::findDamageOnce() {
  if (!damage) damage = findDamage(stream->table(), services, &suspicion);
  return *damage;
}

struct ItemRangeState {
  ItemRangeState(std::shared_ptr<NotebookState> owner, const Sheet& sheet, TextArena* given);
  ItemRangeState(const ItemRangeState&) = delete;
  ItemRangeState& operator=(const ItemRangeState&) = delete;

  bool advance();
  std::optional<Error> error();

  void clearItem();
  static void* allocateText(void* context, void* block, std::size_t size, std::uint32_t flags);
  void adoptNotebookText();
  void close();

  std::shared_ptr<NotebookState> notebook;
  NotebookStream stream;
  TextArena ownTexts;
  TextArena* texts;
  std::uint32_t startOffset;   // as the sheet has it
  std::uint32_t sheetStart;    // in the bytes that are read
  bool lostSomething = false;  // to the memory limit
  bool opened = false;
  bool started = false;
  ReaderHandle reader;
  SheetHandle sheet;  // null before opening, when that failed, and after the last item
  Item item;
};

ItemRangeState::ItemRangeState(std::shared_ptr<NotebookState> owner, const Sheet& which,
                               TextArena* given)
    : notebook(std::move(owner)),
      stream(notebook->bytes),
      ownTexts(notebook->pool),
      texts(given != nullptr ? given : &ownTexts),
      startOffset(which.startOffset),
      sheetStart(notebook->salvaged ? notebook->salvaged->repairedOffset(startOffset)
                                    : startOffset) {
  const std::uint64_t refusalsBefore = notebook->pool->refusals();
  reader.reset(
      QPSAllocateReader(nullptr, nullptr, &stream.table(), &notebook->services, nullptr, nullptr));
  if (reader) sheet.reset(QPSInitSheet(reader.get(), this, sheetStart, allocateText, nullptr));
  opened = sheet != nullptr;
  item.sheet_ = sheet.get();
  // What the reader leaves out of a sheet for want of memory, such as rows with their heights, it
  // leaves out here. Later refusals cost time only, but for the texts of items, which show theirs.
  lostSomething = notebook->pool->refusals() != refusalsBefore;
  if (!opened) close();
}

void* ItemRangeState::allocateText(void* context, void*, std::size_t size, std::uint32_t) {
  auto& self = *static_cast<ItemRangeState*>(context);
  void* const text = self.texts->allocate(size);
  if (text == nullptr) self.lostSomething = true;
  return text;
}

// In two parts: gcc takes a string instruction for the whole, which is slow to start (9 ns, not 2).
void ItemRangeState::clearItem() {
  constexpr std::size_t kHalf = 64;
  std::memset(item.raw_.bytes, 0, kHalf);
  std::memset(item.raw_.bytes + kHalf, 0, sizeof item.raw_ - kHalf);
}

bool ItemRangeState::advance() {
  started = true;
  if (!sheet) return false;
  if (texts == &ownTexts) ownTexts.clear();
  clearItem();
  if (QPSProcessSheet(sheet.get(), &item.raw_) != 0) {
    close();
    return false;
  }
  const Item::Kind kind = item.kind();
  if (kind == Item::Kind::kRecord37Text || kind == Item::Kind::kRecord38Text) adoptNotebookText();
  return true;
}

// The notebook's texts come in pool blocks that belong to the host: they move to where the other
// texts are, so that one rule says how long any text lives.
void ItemRangeState::adoptNotebookText() {
  char* const block = item.raw_.notebookText.text;
  if (block == nullptr) {
    lostSomething = true;
    return;
  }
  const std::size_t bytes = std::strlen(block) + 1;
  void* const text = allocateText(this, nullptr, bytes, 0);
  if (text != nullptr) std::memcpy(text, block, bytes);
  item.raw_.notebookText.text = static_cast<char*>(text);
  notebook->pool->free(block);
}

// What a sheet needs goes back at its end, not only with the range.
void ItemRangeState::close() {
  item.sheet_ = nullptr;
  sheet.reset();
  reader.reset();
}

std::optional<Error> ItemRangeState::error() {
  if (auto failure = notebook->bytes.readError()) return failure;
  if (lostSomething) return memoryLimitError();
  if (sheet) return std::nullopt;
  if (notebook->salvaged && notebook->salvaged->isCut(startOffset)) return *notebook->damage;
  // One walk over the whole notebook clears all of its sheets; one over the sheet only when not.
  if (notebook->findDamageOnce()) {
    if (auto damage = findSheetDamage(stream.table(), notebook->services, sheetStart))
      return damage;
  }
  if (opened) return std::nullopt;
  return Error{Reason::kDamaged, "damaged: the worksheet at byte " + std::to_string(startOffset) +
                                     " cannot be opened"};
}

ItemRange::ItemRange(std::unique_ptr<ItemRangeState> state) : state_(std::move(state)) {}
ItemRange::ItemRange(ItemRange&&) noexcept = default;
ItemRange& ItemRange::operator=(ItemRange&&) noexcept = default;
ItemRange::~ItemRange() = default;

ItemRange::Iterator ItemRange::begin() {
  if (!state_) return Iterator(nullptr);
  const bool here = state_->started ? state_->sheet != nullptr : state_->advance();
  return Iterator(here ? state_.get() : nullptr);
}

bool ItemRange::advance(ItemRangeState& state) {
  return state.advance();
}
const Item& ItemRange::current(const ItemRangeState& state) {
  return state.item;
}

std::optional<Error> ItemRange::error() const {
  if (!state_) return std::nullopt;
  return state_->error();
}

Expected<Notebook> Notebook::open(const std::filesystem::path& path, const OpenOptions& options) {
  auto state = std::make_shared<NotebookState>(options);
  if (auto failure = state->bytes.open(path)) return *std::move(failure);
  if (auto failure = state->list()) return *std::move(failure);
  return Notebook(std::move(state));
}

Expected<Notebook> Notebook::openMemory(std::span<const std::byte> bytes,
                                        const OpenOptions& options) {
  auto state = std::make_shared<NotebookState>(options);
  state->bytes.borrow(bytes);
  if (auto failure = state->list()) return *std::move(failure);
  return Notebook(std::move(state));
}

Notebook::Notebook(std::shared_ptr<NotebookState> state) : state_(std::move(state)) {}
Notebook::Notebook(Notebook&&) noexcept = default;
Notebook& Notebook::operator=(Notebook&&) noexcept = default;
Notebook::~Notebook() = default;

std::span<const Sheet> Notebook::sheets() const& {
  return state_ ? std::span<const Sheet>(state_->sheets) : std::span<const Sheet>();
}

const Sheet* Notebook::findSheet(std::string_view name) const& {
  for (const Sheet& sheet : sheets())
    if (sheet.name == name) return &sheet;
  return nullptr;
}

ItemRange Notebook::items(const Sheet& sheet) const {
  if (!state_) return ItemRange(nullptr);
  return ItemRange(std::make_unique<ItemRangeState>(state_, sheet, nullptr));
}

ItemRange Notebook::items(const Sheet& sheet, TextArena& arena) const {
  if (!state_) return ItemRange(nullptr);
  return ItemRange(std::make_unique<ItemRangeState>(state_, sheet, &arena));
}

TextArena Notebook::textArena() const {
  return TextArena(state_ ? state_->pool : nullptr);
}

const NotebookFacts& Notebook::facts() const& {
  static constexpr NotebookFacts kNone;
  return state_ ? state_->facts : kNone;
}

std::optional<Error> Notebook::damage() const {
  if (!state_) return std::nullopt;
  return state_->findDamageOnce();
}

std::optional<Error> Notebook::suspicion() const {
  if (!state_ || state_->findDamageOnce()) return std::nullopt;
  return state_->suspicion;
}

std::size_t Notebook::memoryInUse() const {
  return state_ ? state_->pool->bytesInUse() : 0;
}

}  // namespace qps
