// SPDX-License-Identifier: MIT
//
// Notebook: a Quattro Pro for Windows notebook, opened from a path or from bytes in memory.
//
//     const auto notebook = qps::Notebook::open("budget.wb2");
//     if (!notebook) return fail(notebook.error().message);
//     for (const qps::Sheet& sheet : notebook->sheets()) {
//       auto items = notebook->items(sheet);
//       for (const qps::Item& item : items)
//         if (const auto cell = item.cell())
//           print(sheet.name, cell->row(), cell->column(), cell->text());
//       if (const auto error = items.error()) return fail(error->message);
//     }
//
// Nothing here throws on account of the file's contents; what cannot be read becomes an Error.
// (Expected::value throws when it is asked for a value that is not there, and std::bad_alloc
// remains possible when the machine has no memory for an error message.)
//
// Threads: different notebooks may be used on different threads at the same time. One notebook and
// the ranges and arenas that come from it, which share its memory pool, are for one thread at a
// time.
#ifndef QPSREADER_HOST_NOTEBOOK_HPP
#define QPSREADER_HOST_NOTEBOOK_HPP

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <iterator>
#include <memory>
#include <optional>
#include <ranges>
#include <span>
#include <string_view>
#include <type_traits>

#include <qpsreader/host/expected.hpp>
#include <qpsreader/host/file_facts.hpp>
#include <qpsreader/host/item.hpp>
#include <qpsreader/host/text_arena.hpp>

namespace qps {

struct OpenOptions {
  // The most bytes that the notebook may hold at a time: what the reader keeps, the list of
  // worksheets, the texts of items (those in arenas too), and the file's bytes where they were read
  // into memory. 0 is no limit.
  std::size_t memoryLimit = 0;

  // A folder to take the compound-document library from before any other place (Notebook::open);
  // relative to the current directory at that call.
  std::filesystem::path libraryFolder = {};

  // Reads what is left of a damaged notebook, not only what stands before the damage: worksheets
  // behind it are found again, and one that it cuts short ends there. Notebook::damage tells which
  // bytes of the record stream are lost. Opening walks over all records; those of a damaged
  // notebook are copied into memory, and stricter rules tell whether it is one.
  bool salvage = false;
};

// One worksheet. `name` holds as long as the notebook (or one of its ranges) lives.
struct Sheet {
  std::uint32_t index = 0;  // its place in Notebook::sheets(), from 0
  std::uint32_t startOffset =
      0;                  // of its first record, in bytes from the start of the record stream
  std::string_view name;  // at most 63 bytes of the file's own character set
};

struct ItemRangeState;  // host/notebook.cpp
struct NotebookState;

// The items of one worksheet, in the file's order, to be walked through once:
//
//     auto items = notebook.items(sheet);
//     for (const qps::Item& item : items) ...
//     if (const auto error = items.error()) ...   // otherwise the sheet came out whole
//
// It has a stream of its own and keeps what it needs of the notebook alive: it may outlive it, be
// moved while an iterator is in use, and be left before its end. A moved-from range is empty.
class ItemRange {
 public:
  class Iterator;

  ItemRange(ItemRange&&) noexcept;
  ItemRange& operator=(ItemRange&&) noexcept;
  ~ItemRange();

  // Moves to the next item and returns an iterator there (a second begin() does not start again).
  Iterator begin();
  static std::default_sentinel_t end() { return std::default_sentinel; }

  // Why the worksheet could not be opened, ended too early or is not whole. kDamaged: its end
  // record was not reached. kMemoryLimit: something of this worksheet did not fit the limit and was
  // left out, such as the text of a cell or the height of a row. None when all is well, as far as
  // the items have been delivered. The first call for a notebook after the last item walks its
  // record headers once (see Notebook::damage).
  std::optional<Error> error() const;

 private:
  friend class Notebook;
  explicit ItemRange(std::unique_ptr<ItemRangeState> state);

  static bool advance(ItemRangeState& state);
  static const Item& current(const ItemRangeState& state);

  std::unique_ptr<ItemRangeState> state_;
};

// An input iterator over the one Item that the range reuses.
class ItemRange::Iterator {
 public:
  using iterator_concept = std::input_iterator_tag;
  using value_type = Item;
  using difference_type = std::ptrdiff_t;
  using reference = const Item&;

  const Item& operator*() const { return *item_; }
  const Item* operator->() const { return item_; }

  Iterator& operator++() {
    if (!advance(*state_)) state_ = nullptr;
    return *this;
  }
  void operator++(int) { ++*this; }

  friend bool operator==(const Iterator& it, std::default_sentinel_t) {
    return it.state_ == nullptr;
  }

 private:
  friend class ItemRange;
  explicit Iterator(ItemRangeState* state)
      : state_(state), item_(state == nullptr ? nullptr : &current(*state)) {}

  ItemRangeState* state_;
  const Item* item_;
};

// Bytes in memory that outlive the call: a span, or a container that is no temporary, of elements
// of one byte.
template <class T>
concept MemoryBytes = std::ranges::contiguous_range<T> && std::ranges::sized_range<T> &&
                      std::ranges::borrowed_range<T> && sizeof(std::ranges::range_value_t<T>) == 1;

// Move-only; a moved-from notebook is empty: no sheets, and ranges without items.
class Notebook {
 public:
  // Opens the file and lists its worksheets; it has at least one. A file of up to 64 MiB (or a
  // quarter of the memory limit) is read into memory at once. A larger one is read in blocks as it
  // is needed, so it must stay as it is meanwhile (one that is cut short meanwhile shows as
  // damaged). Anything that is no regular file (a pipe, a device) is read as a whole, up to 4 GiB.
  //
  // A notebook in a compound document takes the library zbolefio.dll. The static host
  // (qpsreader::host_static, `pkg-config --static qpshost`) has it linked in; otherwise it is
  // looked for beside the shared reader, or beside the program that has the reader in it, and
  // nowhere else but first in OpenOptions::libraryFolder. Without it the error is kLibraryMissing.
  static Expected<Notebook> open(const std::filesystem::path& path,
                                 const OpenOptions& options = {});

  // The same from memory: a std::vector<std::uint8_t>, a std::span<const std::byte> and the like.
  // The bytes are not copied: they must outlive the notebook and its ranges. Whatever a path can be
  // made of (std::string, char arrays) is a path here; openBytes takes it as the bytes themselves.
  template <MemoryBytes Bytes>
  requires(!std::is_convertible_v<Bytes, std::filesystem::path>) static Expected<Notebook> open(
      Bytes&& bytes, const OpenOptions& options = {}) {
    return openBytes(bytes, options);
  }
  template <MemoryBytes Bytes>
  static Expected<Notebook> openBytes(Bytes&& bytes, const OpenOptions& options = {}) {
    return openMemory(std::as_bytes(std::span(bytes)), options);
  }

  Notebook(Notebook&&) noexcept;
  Notebook& operator=(Notebook&&) noexcept;
  ~Notebook();

  // In the file's order. Worksheets that the file does not describe are left out.
  std::span<const Sheet> sheets() const&;
  std::span<const Sheet> sheets() const&& = delete;  // they would go with the notebook

  // The first worksheet with exactly this name (in the file's character set), or null.
  const Sheet* findSheet(std::string_view name) const&;
  const Sheet* findSheet(std::string_view name) const&& = delete;

  // Opens a worksheet of this notebook, for which the records before the first worksheet are read
  // again. A failure shows as a range without items, and in its error(). Several ranges may be
  // alive at a time: each has its own stream over the same bytes.
  //
  // Without an arena an item's text holds until the next item. With one, texts go there without
  // another copy and live as long as it does; the arena must stay in place and outlive the range.
  ItemRange items(const Sheet& sheet) const;
  ItemRange items(const Sheet& sheet, TextArena& arena) const;

  // An arena within this notebook's memory limit.
  TextArena textArena() const;

  // What the records before the first worksheet say.
  const NotebookFacts& facts() const&;
  const NotebookFacts& facts() const&& = delete;

  // Whether the notebook is cut short, or its records cannot be followed to the end record: the
  // reader itself delivers what comes before the damage and ends as if nothing had been. None for a
  // whole notebook (whatever bytes follow its end record). The first call walks the headers of all
  // records, once: about a twentieth of the cost of reading the cells.
  std::optional<Error> damage() const;

  // What makes it likely that a notebook without such damage is damaged all the same: the first
  // record whose type or length no notebook is known to have, or that ends a worksheet where none
  // is open. Missing bytes make such records, which may hide whole rows and even worksheets behind
  // them; OpenOptions::salvage takes them for damage. None where there is no such record. Notebooks
  // have no checksums: bytes that miss so that the records line up again cannot be noticed.
  std::optional<Error> suspicion() const;

  // What the notebook, its ranges and its arenas hold at the moment, in bytes.
  std::size_t memoryInUse() const;

 private:
  explicit Notebook(std::shared_ptr<NotebookState> state);
  static Expected<Notebook> openMemory(std::span<const std::byte> bytes,
                                       const OpenOptions& options);

  std::shared_ptr<NotebookState> state_;
};

}  // namespace qps

#endif  // QPSREADER_HOST_NOTEBOOK_HPP
