// SPDX-License-Identifier: MIT
//
// The end of an open worksheet, reached through QPSCloseSheet and through every failed opening.
#include "reader/frame/pool.h"
#include "reader/frame/qps_sheet.h"

namespace qps {

namespace {

void releaseStyles(QPSSheet& sheet) {
  poolFreeList(sheet.services, sheet.styleList);
  for (QPSStylePage* page : sheet.stylePageByNumber) {
    if (page == nullptr) continue;
    for (QPSAppearance* appearance : page->appearances)
      poolFree(sheet.services, appearance);
    poolFree(sheet.services, page);
  }
}

void releaseFormats(QPSSheet& sheet) {
  poolFreeList(sheet.services, sheet.formatList, [&](QPSUserFormat& format) {
    poolFree(sheet.services, format.text);
    poolFree(sheet.services, format.plan);
  });
}

}  // namespace

void closeSheet(QPSSheet* sheet) {
  SSHostServices* services = sheet->services;
  if (SSStream* stream = sheet->records.stream) stream->close(stream);
  closeContainer(sheet->container, services);

  poolFreeList(services, sheet->fontList);
  poolFreeList(services, sheet->namedStyleList,
               [&](QPSNamedStyle& style) { poolFree(services, style.name); });
  releaseStyles(*sheet);
  poolFreeList(services, sheet->rowHeightList);
  releaseFormats(*sheet);
  poolFree(services, sheet->record38Text);
  poolFree(services, sheet->record37Text);
  poolFree(services, sheet);
}

}  // namespace qps

int32_t QPSCloseSheet(QPSSheet* sheet) {
  if (sheet == nullptr) return -1;
  qps::closeSheet(sheet);
  return 0;
}
