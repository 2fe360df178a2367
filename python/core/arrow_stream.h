// SPDX-License-Identifier: MIT
//
// Cell tables as an Arrow stream (the C stream interface of Apache Arrow: three structures of
// function pointers, no library). One record batch a worksheet, with the columns of kColumns in
// arrow_stream.cpp. The stream and its batches share the tables' memory; any thread may use them,
// and none needs Python.
#ifndef QPSREADER_PYTHON_ARROW_STREAM_H
#define QPSREADER_PYTHON_ARROW_STREAM_H

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "python/core/cell_table.h"

// NOLINTBEGIN(readability-identifier-naming): the names are Arrow's
extern "C" {

struct ArrowSchema {
  const char* format;
  const char* name;
  const char* metadata;
  int64_t flags;
  int64_t n_children;
  ArrowSchema** children;
  ArrowSchema* dictionary;
  void (*release)(ArrowSchema*);
  void* private_data;
};

struct ArrowArray {
  int64_t length;
  int64_t null_count;
  int64_t offset;
  int64_t n_buffers;
  int64_t n_children;
  const void** buffers;
  ArrowArray** children;
  ArrowArray* dictionary;
  void (*release)(ArrowArray*);
  void* private_data;
};

struct ArrowArrayStream {
  int (*get_schema)(ArrowArrayStream*, ArrowSchema* out);
  int (*get_next)(ArrowArrayStream*, ArrowArray* out);
  const char* (*get_last_error)(ArrowArrayStream*);
  void (*release)(ArrowArrayStream*);
  void* private_data;
};
}
// NOLINTEND(readability-identifier-naming)

namespace qps::python {

struct NamedTable {
  std::string sheet;  // its name in UTF-8
  std::shared_ptr<const CellTable> cells;
};

// Fills `stream`, which the consumer releases.
void exportStream(std::vector<NamedTable> tables, ArrowArrayStream& stream);

}  // namespace qps::python

#endif  // QPSREADER_PYTHON_ARROW_STREAM_H
