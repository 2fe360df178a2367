// SPDX-License-Identifier: MIT
//
// The reader handle and the small operations that need no file.
#include <qpsreader/qps_reader.h>
#include "reader/frame/pool.h"

namespace {

// The selector of QPSGetWorkSheetInfo that asks for the list; the others ask for nothing.
constexpr uint32_t kListWorksheets = 0;

}  // namespace

QPSReader* QPSAllocateReader(void* owner, void* /*ignored*/, SSStream* stream,
                             SSHostServices* services, void* hostValue1, void* hostValue2) {
  auto* reader = static_cast<QPSReader*>(qps::poolCalloc(services, 1, sizeof(QPSReader)));
  if (reader == nullptr) return nullptr;
  reader->owner = owner;
  reader->stream = stream;
  reader->services = services;
  reader->hostValue1 = hostValue1;
  reader->hostValue2 = hostValue2;
  return reader;
}

void QPSCloseReader(QPSReader* reader) {
  if (reader == nullptr || reader->services == nullptr) return;
  SSHostServices* services = reader->services;
  qps::poolFree(services, reader->sheetTable);
  qps::poolFree(services, reader);
}

int32_t QPSGetCharSet(QPSReader* /*reader*/, uint32_t* charSet) {
  *charSet = 0;
  return 0;
}

int32_t QPSGetWorkSheetInfo(QPSReader* reader, SSWorkSheetList* result, uint32_t selector) {
  if (selector != kListWorksheets) return 1;
  if (reader == nullptr) return 0;
  return qpsWorkSheetInfo(reader, result);
}

void qpsGetSSReaderInterface(SSReaderInterface* table) {
  static constexpr SSReaderInterface kOperations{
      .allocateReader = QPSAllocateReader,
      .closeReader = QPSCloseReader,
      .getCharSet = QPSGetCharSet,
      .reserved3 = nullptr,
      .getWorkSheetInfo = QPSGetWorkSheetInfo,
      .reserved5 = nullptr,
      .initSheet = QPSInitSheet,
      .processSheet = QPSProcessSheet,
      .closeSheet = QPSCloseSheet,
  };
  *table = kOperations;
}
