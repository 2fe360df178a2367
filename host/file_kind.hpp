// SPDX-License-Identifier: MIT
//
// The kinds of file that are told apart, by content and never by name: the notebooks that the
// reader reads, and the files that people take for one.
#ifndef QPSREADER_HOST_FILE_KIND_HPP
#define QPSREADER_HOST_FILE_KIND_HPP

#include <cstdint>

namespace qps {

enum class FileKind : std::uint8_t {
  kUnknown,
  kPlainNotebook,     // .wb1, .wb2: records from the first byte
  kCompoundNotebook,  // .wb3: the records lie in a stream of a compound document
  kDosSpreadsheet,    // .wq1, .wq2: the older relatives
  kNewerNotebook,     // .qpw: the newer relative, a compound document with other contents
  kLotusWorksheet,    // .wk1, .wk3, .wk4, .123
  kExcelWorkbook,     // .xls, in a compound document or before there were any
  kZipArchive,        // .xlsx, .ods and other packages in a ZIP archive
  kPdf,
  kHtml,
  kCompoundDocument,  // a compound document without any stream that is known here
};

// What people call the kind ("a PDF document"); "" for kUnknown.
const char* fileKindName(FileKind kind);

// The notebooks' MIME type; "" for every other kind.
const char* fileKindMimeType(FileKind kind);

}  // namespace qps

#endif  // QPSREADER_HOST_FILE_KIND_HPP
