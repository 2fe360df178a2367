// SPDX-License-Identifier: MIT
//
// From bytes to reasons: the beginning of the file, the streams of a compound document, the
// records.
#include "host/diagnosis.hpp"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

#include "host/record_source.hpp"
#include "host/salvage.hpp"

namespace qps {
namespace {

using namespace std::string_view_literals;

enum RecordType : std::uint16_t {
  kVersion = 0,
  kRefusal = 76,
  kWorksheet = 202,
  kWorksheetEnd = 203,
  kStyle = 206,
  kFont = 207,
  kNamedStyle = 208,
  kUserFormat = 230,
  kDefinitionsEnd = 310,
};

struct BeginRow {
  std::string_view begin;
  FileKind kind;
};

// The first match counts. Record files begin with record 0 (type, length, version), the notebooks
// with versions 0x1001, 0x1002 and up.
constexpr BeginRow kBegins[] = {
    {"\x00\x00\x02\x00\x20\x51"sv, FileKind::kDosSpreadsheet},
    {"\x00\x00\x02\x00\x21\x51"sv, FileKind::kDosSpreadsheet},
    {"\x00\x00\x02\x00\x04\x04"sv, FileKind::kLotusWorksheet},
    {"\x00\x00\x02\x00\x06\x04"sv, FileKind::kLotusWorksheet},
    {"\x00\x00\x1A\x00"sv, FileKind::kLotusWorksheet},
    {"\x09\x00\x04\x00"sv, FileKind::kExcelWorkbook},
    {"\x09\x02\x06\x00"sv, FileKind::kExcelWorkbook},
    {"\x09\x04\x06\x00"sv, FileKind::kExcelWorkbook},
    {"\x09\x08\x08\x00"sv, FileKind::kExcelWorkbook},
    {"\x09\x08\x10\x00"sv, FileKind::kExcelWorkbook},
    {"\xD0\xCF\x11\xE0"sv, FileKind::kCompoundDocument},
    {"PK\x03\x04"sv, FileKind::kZipArchive},
    {"%PDF-"sv, FileKind::kPdf},
};

struct StreamRow {
  const char* name;
  FileKind kind;
};

constexpr StreamRow kRelativesByStream[] = {
    {"NativeContent_MAIN", FileKind::kNewerNotebook},
    {"Workbook", FileKind::kExcelWorkbook},
    {"Book", FileKind::kExcelWorkbook},
};

struct NameRow {
  FileKind kind;
  const char* name;
};

constexpr NameRow kNames[] = {
    {FileKind::kPlainNotebook, "a Quattro Pro for Windows notebook"},
    {FileKind::kCompoundNotebook, "a Quattro Pro for Windows notebook in a compound document"},
    {FileKind::kDosSpreadsheet, "a Quattro Pro for DOS spreadsheet"},
    {FileKind::kNewerNotebook, "a notebook of Quattro Pro 9 or later"},
    {FileKind::kLotusWorksheet, "a Lotus 1-2-3 worksheet"},
    {FileKind::kExcelWorkbook, "an Excel workbook"},
    {FileKind::kZipArchive, "a ZIP archive (as .xlsx and .ods files are)"},
    {FileKind::kPdf, "a PDF document"},
    {FileKind::kHtml, "an HTML page"},
    {FileKind::kCompoundDocument, "a compound document of another program"},
};

bool isHtml(std::string_view text) {
  if (text.starts_with("\xEF\xBB\xBF")) text.remove_prefix(3);
  text.remove_prefix(std::min(text.find_first_not_of(" \t\r\n"), text.size()));
  for (const std::string_view tag : {"<!doctype html"sv, "<html"sv}) {
    const auto sameLetter = [](char a, char b) { return (a >= 'A' && a <= 'Z' ? a + 32 : a) == b; };
    const std::string_view begin = text.substr(0, tag.size());
    if (std::equal(begin.begin(), begin.end(), tag.begin(), tag.end(), sameLetter)) return true;
  }
  return false;
}

// The header of record 0 and a version 0x10xx, or what a cut file still has of that.
bool isPlainNotebook(std::string_view begin) {
  return begin.starts_with("\x00\x00\x02\x00"sv) && (begin.size() < 6 || begin[5] == '\x10');
}

Error notANotebook(FileKind kind) {
  std::string message = "not a Quattro Pro for Windows notebook";
  if (kind != FileKind::kUnknown) message += std::string(", but ") + fileKindName(kind);
  return {Reason::kNotANotebook, std::move(message)};
}

Error damaged(std::string message) {
  return {Reason::kDamaged, std::move(message)};
}

FileKind containerKind(RecordSource& source) {
  for (const StreamRow& row : kRelativesByStream)
    if (source.hasStream(row.name)) return row.kind;
  return FileKind::kCompoundDocument;
}

// Why there are no records, for every status but kOpen.
Error sourceError(RecordSource& source) {
  switch (source.status()) {
    case RecordSource::Status::kMemoryLimit:
      return memoryLimitError();
    case RecordSource::Status::kLibraryMissing:
      return {Reason::kLibraryMissing,
              "a compound document, and the library for it (" OLE_LIBRARY_NAME ") was not found"};
    case RecordSource::Status::kBrokenContainer:
      return damaged("damaged: its compound document cannot be opened");
    case RecordSource::Status::kOtherContainer:
      return notANotebook(containerKind(source));
    default:
      return {Reason::kUnreadable, "the file cannot be read"};
  }
}

// Why a walk ended before the end record; none when it did not.
std::optional<Error> damageAt(RecordWalk::Step step, const RecordWalk& walk) {
  if (step == RecordWalk::Step::kCutShort)
    return damaged("cut short: the records end at byte " + std::to_string(walk.nextOffset()) +
                   " without an end record");
  if (step == RecordWalk::Step::kOverrun)
    return damaged("cut short: the record at byte " + std::to_string(walk.record().offset) +
                   " runs past the end");
  return std::nullopt;
}

Error noSheetEnd(std::uint64_t sheetStart) {
  return damaged("damaged: the worksheet at byte " + std::to_string(sheetStart) +
                 " has no end record");
}

// The walk through the definitions, up to the first worksheet. The reader refuses a notebook whose
// record 76 has a first value that is not 0.
struct Definitions {
  NotebookFacts facts;
  bool isProtected = false;
};

Definitions readDefinitions(RecordSource& source) {
  Definitions found;
  const bool plain = *source.streamName() == '\0';
  found.facts.kind = plain ? FileKind::kPlainNotebook : FileKind::kCompoundNotebook;
  found.facts.containerStream = source.streamName();
  RecordWalk walk(source.records(), 0);
  bool versionSeen = false;
  for (; walk.next() == RecordWalk::Step::kRecord; ++found.facts.definitionRecords) {
    switch (walk.record().type) {
      case kVersion:
        if (!versionSeen) found.facts.formatVersion = walk.firstValue();
        versionSeen = true;
        break;
      case kRefusal:
        if (walk.firstValue() != 0) found.isProtected = true;
        break;
      case kStyle:
        ++found.facts.styleCount;
        break;
      case kFont:
        ++found.facts.fontCount;
        break;
      case kNamedStyle:
        ++found.facts.namedStyleCount;
        break;
      case kUserFormat:
        ++found.facts.userFormatCount;
        break;
      case kWorksheet:
      case kDefinitionsEnd:
        return found;
      default:
        break;
    }
  }
  return found;
}

Error protectedError() {
  return {Reason::kProtected, "protected by a password"};
}

std::optional<Error> damageIn(RecordSource& source, std::optional<Error>* suspicion = nullptr) {
  RecordWalk walk(source.records(), 0);
  std::uint64_t sheetStart = 0;
  bool inSheet = false;
  while (true) {
    const RecordWalk::Step step = walk.next();
    if (step == RecordWalk::Step::kEnd && inSheet) return noSheetEnd(sheetStart);
    if (step != RecordWalk::Step::kRecord) return damageAt(step, walk);
    const RecordHeader& record = walk.record();
    const bool strayEnd = record.type == kWorksheetEnd && !inSheet;
    if (suspicion != nullptr && !*suspicion && (strayEnd || !isPlausible(record)))
      *suspicion = damaged("the record at byte " + std::to_string(record.offset) +
                           " is none of a notebook's");
    if (record.type == kWorksheetEnd) inSheet = false;
    if (record.type != kWorksheet) continue;
    if (inSheet) return noSheetEnd(sheetStart);
    inSheet = true;
    sheetStart = record.offset;
  }
}

}  // namespace

const char* fileKindName(FileKind kind) {
  for (const NameRow& row : kNames)
    if (row.kind == kind) return row.name;
  return "";
}

const char* fileKindMimeType(FileKind kind) {
  const bool notebook = kind == FileKind::kPlainNotebook || kind == FileKind::kCompoundNotebook;
  return notebook ? "application/x-quattropro" : "";
}

FileKind fileKindOf(std::span<const unsigned char> begin) {
  const std::string_view text(reinterpret_cast<const char*>(begin.data()), begin.size());
  for (const BeginRow& row : kBegins)
    if (text.starts_with(row.begin)) return row.kind;
  if (isPlainNotebook(text)) return FileKind::kPlainNotebook;
  return isHtml(text) ? FileKind::kHtml : FileKind::kUnknown;
}

Error diagnoseListing(SSStream& file, HostServices& services) {
  if (services.heapPool().limitHit()) return memoryLimitError();
  RecordSource source(file, services);
  if (source.status() != RecordSource::Status::kOpen) return sourceError(source);

  if (*source.streamName() == '\0') {
    std::array<unsigned char, 512> begin{};
    const std::size_t got = file.read(&file, begin.data(), begin.size());
    if (got == 0) return {Reason::kEmpty, "the file is empty"};
    const FileKind kind = fileKindOf({begin.data(), got});
    if (kind != FileKind::kPlainNotebook) return notANotebook(kind);
  }
  if (!source.rewind()) return sourceError(source);
  if (readDefinitions(source).isProtected) return protectedError();
  if (!source.rewind()) return sourceError(source);
  if (auto damage = damageIn(source)) return *std::move(damage);
  return damaged("damaged: the notebook has no worksheets");
}

Expected<NotebookFacts> readFacts(SSStream& file, HostServices& services) {
  RecordSource source(file, services);
  if (source.status() != RecordSource::Status::kOpen) return sourceError(source);
  const Definitions definitions = readDefinitions(source);
  if (definitions.isProtected) return protectedError();
  return definitions.facts;
}

std::optional<Error> findDamage(SSStream& file, HostServices& services,
                                std::optional<Error>* suspicion) {
  RecordSource source(file, services);
  if (source.status() != RecordSource::Status::kOpen) return sourceError(source);
  return damageIn(source, suspicion);
}

std::optional<Error> findSheetDamage(SSStream& file, HostServices& services,
                                     std::uint32_t startOffset) {
  RecordSource source(file, services);
  if (source.status() != RecordSource::Status::kOpen) return sourceError(source);
  SSStream& records = source.records();
  if (records.seek(&records, static_cast<std::ptrdiff_t>(startOffset), SSSeekFromStart) == 0)
    return noSheetEnd(startOffset);
  RecordWalk walk(records, startOffset);
  while (walk.next() == RecordWalk::Step::kRecord) {
    const RecordHeader& record = walk.record();
    if (record.type == kWorksheetEnd) return std::nullopt;
    if (record.type == kWorksheet && record.offset != startOffset) break;
  }
  return noSheetEnd(startOffset);
}

}  // namespace qps
