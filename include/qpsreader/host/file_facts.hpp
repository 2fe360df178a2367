// SPDX-License-Identifier: MIT
//
// What can be said about a file by its content: its kind (never judged by its name) and, for a
// notebook, what the records before the first worksheet say.
#ifndef QPSREADER_HOST_FILE_FACTS_HPP
#define QPSREADER_HOST_FILE_FACTS_HPP

#include <cstdint>

namespace qps {

// The notebooks that the reader reads, and the files that people take for one.
enum class FileKind : std::uint8_t {
  kUnknown,
  kPlainNotebook,     // .wb1, .wb2: records from the first byte
  kCompoundNotebook,  // .wb3: the records lie in a stream of a compound document
  kDosSpreadsheet,    // .wq1, .wq2: the older relatives
  kNewerNotebook,     // .qpw: the newer relative, a compound document with other contents
  kLotusWorksheet,    // .wk1, .wk3, .wk4, .123
  kExcelWorkbook,     // .xls, in a compound document or from before there were any
  kZipArchive,        // .xlsx, .ods and other packages in a ZIP archive
  kPdf,
  kHtml,
  kCompoundDocument,  // a compound document without any stream that is known here
};

// What people call the kind, with an article ("a PDF document"); "" for kUnknown.
const char* fileKindName(FileKind kind);

// The notebooks' MIME type; "" for every other kind.
const char* fileKindMimeType(FileKind kind);

struct NotebookFacts {
  FileKind kind = FileKind::kUnknown;  // kPlainNotebook or kCompoundNotebook
  const char* containerStream = "";    // the stream's name in the compound document; "" when plain
  std::uint16_t formatVersion = 0;     // the first value of record 0: 0x1001, 0x1002, ...
  std::uint32_t fontCount = 0;
  std::uint32_t styleCount = 0;
  std::uint32_t namedStyleCount = 0;
  std::uint32_t userFormatCount = 0;
  std::uint32_t definitionRecords = 0;  // of all kinds; each worksheet reads them again
};

}  // namespace qps

#endif  // QPSREADER_HOST_FILE_FACTS_HPP
