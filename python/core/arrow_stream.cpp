// SPDX-License-Identifier: MIT
#include "python/core/arrow_stream.h"

#include <cerrno>
#include <iterator>
#include <new>
#include <type_traits>
#include <utility>

namespace qps::python {
namespace {

// The values of a dictionary column; every one is there.
using Dictionary = TextColumn;

// What the arrays of one batch point into.
struct Batch {
  std::shared_ptr<const CellTable> cells;
  Dictionary sheet, kinds;
  std::vector<std::int32_t> sheetIndex;  // as many zeros as there are cells
};

struct Column {
  const char* name;
  const char* format;  // of Arrow
  bool nullable;
  const Dictionary Batch::*dictionary;  // or null
  std::vector<const void*> (*buffers)(const Batch&);
};

std::vector<const void*> textBuffers(const TextColumn& texts) {
  return {texts.present.bytes.data(), texts.ends.data(), texts.utf8.data()};
}

constexpr Column kColumns[] = {
    {"sheet", "i", false, &Batch::sheet,
     [](const Batch& b) {
       return std::vector<const void*>{nullptr, b.sheetIndex.data()};
     }},
    {"row", "I", false, nullptr,
     [](const Batch& b) {
       return std::vector<const void*>{nullptr, b.cells->row.data()};
     }},
    {"column", "S", false, nullptr,
     [](const Batch& b) {
       return std::vector<const void*>{nullptr, b.cells->column.data()};
     }},
    {"kind", "C", false, &Batch::kinds,
     [](const Batch& b) {
       return std::vector<const void*>{nullptr, b.cells->kind.data()};
     }},
    {"number", "g", true, nullptr,
     [](const Batch& b) {
       return std::vector<const void*>{b.cells->isNumber.bytes.data(), b.cells->number.data()};
     }},
    {"timestamp", "tsu:", true, nullptr,
     [](const Batch& b) {
       return std::vector<const void*>{b.cells->isDay.bytes.data(), b.cells->when.data()};
     }},
    {"time", "ttu", true, nullptr,
     [](const Batch& b) {
       return std::vector<const void*>{b.cells->isTime.bytes.data(), b.cells->when.data()};
     }},
    {"string", "U", true, nullptr, [](const Batch& b) { return textBuffers(b.cells->string); }},
    {"text", "U", true, nullptr, [](const Batch& b) { return textBuffers(b.cells->text); }},
    {"is_formula", "b", false, nullptr,
     [](const Batch& b) {
       return std::vector<const void*>{nullptr, b.cells->isFormula.bytes.data()};
     }},
};

constexpr std::int64_t kNullable = 2;  // ARROW_FLAG_NULLABLE

// An exported structure with its children and its dictionary, each of which a consumer may move
// away and release by itself.
template <class Structure>
struct Exported {
  std::shared_ptr<const Batch> batch;  // none for a schema
  std::vector<const void*> buffers;
  std::vector<Structure> children;
  std::vector<Structure*> childPointers;
  Structure dictionary{};

  Exported() = default;
  Exported(const Exported&) = delete;
  Exported& operator=(const Exported&) = delete;
  ~Exported() {
    for (Structure& child : children)
      if (child.release != nullptr) child.release(&child);
    if (dictionary.release != nullptr) dictionary.release(&dictionary);
  }

  static void release(Structure* structure) {
    delete static_cast<Exported*>(structure->private_data);
    structure->release = nullptr;
  }

  // `out` takes over what was built; its other fields are the caller's.
  static void hand(std::unique_ptr<Exported> self, Structure& out) {
    for (Structure& child : self->children)
      self->childPointers.push_back(&child);
    out.n_children = static_cast<std::int64_t>(self->children.size());
    out.children = self->childPointers.data();
    out.dictionary = self->dictionary.release != nullptr ? &self->dictionary : nullptr;
    if constexpr (std::is_same_v<Structure, ArrowArray>) {
      out.n_buffers = static_cast<std::int64_t>(self->buffers.size());
      out.buffers = self->buffers.data();
    }
    out.release = release;
    out.private_data = self.release();
  }
};

using SchemaParts = Exported<ArrowSchema>;
using ArrayParts = Exported<ArrowArray>;

void describe(const char* name, const char* format, bool nullable,
              std::unique_ptr<SchemaParts> parts, ArrowSchema& out) {
  out = {};
  out.name = name;
  out.format = format;
  out.flags = nullable ? kNullable : 0;
  SchemaParts::hand(std::move(parts), out);
}

void describeAll(ArrowSchema& out) {
  auto root = std::make_unique<SchemaParts>();
  root->children.reserve(std::size(kColumns));
  root->childPointers.reserve(std::size(kColumns));
  for (const Column& column : kColumns) {
    auto parts = std::make_unique<SchemaParts>();
    if (column.dictionary != nullptr)
      describe("", "U", false, std::make_unique<SchemaParts>(), parts->dictionary);
    describe(column.name, column.format, column.nullable, std::move(parts),
             root->children.emplace_back());
  }
  describe("", "+s", false, std::move(root), out);
}

void fill(std::size_t length, std::int64_t nulls, std::unique_ptr<ArrayParts> parts,
          ArrowArray& out) {
  out = {};
  out.length = static_cast<std::int64_t>(length);
  out.null_count = nulls;
  ArrayParts::hand(std::move(parts), out);
}

std::unique_ptr<ArrayParts> partsOf(const std::shared_ptr<const Batch>& batch,
                                    std::vector<const void*> buffers) {
  auto parts = std::make_unique<ArrayParts>();
  parts->batch = batch;
  parts->buffers = std::move(buffers);
  return parts;
}

void fillAll(const std::shared_ptr<const Batch>& batch, ArrowArray& out) {
  const std::size_t length = batch->cells->size();
  auto root = partsOf(batch, {nullptr});
  root->children.reserve(std::size(kColumns));
  root->childPointers.reserve(std::size(kColumns));
  for (const Column& column : kColumns) {
    auto parts = partsOf(batch, column.buffers(*batch));
    if (column.dictionary != nullptr) {
      const Dictionary& values = (*batch).*column.dictionary;
      fill(values.present.count, 0, partsOf(batch, textBuffers(values)), parts->dictionary);
    }
    fill(length, column.nullable ? -1 : 0, std::move(parts), root->children.emplace_back());
  }
  fill(length, 0, std::move(root), out);
}

void addValue(Dictionary& dictionary, std::string_view utf8) {
  dictionary.utf8.append(utf8);
  dictionary.ends.push_back(static_cast<std::int64_t>(dictionary.utf8.size()));
  dictionary.present.append(true);
}

std::shared_ptr<const Batch> batchOf(const NamedTable& table) {
  auto batch = std::make_shared<Batch>();
  batch->cells = table.cells;
  addValue(batch->sheet, table.sheet);
  for (const char* const name : kKindNames)
    addValue(batch->kinds, name);
  batch->sheetIndex.resize(table.cells->size());
  return batch;
}

struct Stream {
  std::vector<NamedTable> tables;
  std::size_t next = 0;
};

// A callback's result: 0, or an errno.
template <class Work>
int guarded(Work&& work) {
  try {
    work();
    return 0;
  } catch (const std::bad_alloc&) {
    return ENOMEM;
  }
}

int getSchema(ArrowArrayStream*, ArrowSchema* out) {
  return guarded([&] { describeAll(*out); });
}

int getNext(ArrowArrayStream* stream, ArrowArray* out) {
  auto& self = *static_cast<Stream*>(stream->private_data);
  *out = {};  // without `release`: the end
  while (self.next < self.tables.size() && self.tables[self.next].cells->size() == 0)
    ++self.next;
  if (self.next == self.tables.size()) return 0;
  return guarded([&] {
    fillAll(batchOf(self.tables[self.next]), *out);
    self.tables[self.next++].cells.reset();
  });
}

const char* getLastError(ArrowArrayStream*) {
  return "out of memory";
}

void releaseStream(ArrowArrayStream* stream) {
  delete static_cast<Stream*>(stream->private_data);
  stream->release = nullptr;
}

}  // namespace

void exportStream(std::vector<NamedTable> tables, ArrowArrayStream& stream) {
  stream = {getSchema, getNext, getLastError, releaseStream, new Stream{std::move(tables)}};
}

}  // namespace qps::python
