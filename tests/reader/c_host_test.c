/* SPDX-License-Identifier: MIT
 *
 * The whole library from C, through its table: a host over one file in memory lists the worksheets
 * of a notebook (the first argument) and reads each to its end.
 */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <qpsreader/cell_value.h>
#include <qpsreader/qps_reader.h>
#include <qpsreader/ss_item.h>
#include <qpsreader/worksheet_list.h>

#define CHECK(condition)                                             \
  do {                                                               \
    if (!(condition)) {                                              \
      fprintf(stderr, "line %d failed: %s\n", __LINE__, #condition); \
      exit(1);                                                       \
    }                                                                \
  } while (0)

static unsigned char file[65536];
static size_t fileBytes, position;
static int isOpen, blocks;

static int32_t streamOpen(SSStream* stream) {
  (void)stream;
  CHECK(!isOpen);
  position = 0;
  return isOpen = 1;
}

static size_t streamRead(SSStream* stream, void* buffer, size_t count) {
  (void)stream;
  if (count > fileBytes - position) count = fileBytes - position;
  memcpy(buffer, file + position, count);
  position += count;
  return count;
}

static int32_t streamSeek(SSStream* stream, ptrdiff_t offset, int32_t origin) {
  (void)stream;
  const ptrdiff_t target = offset + (origin == SSSeekFromCurrent ? (ptrdiff_t)position : 0);
  if (target < 0 || (size_t)target > fileBytes) return 0;
  position = (size_t)target;
  return 1;
}

static ptrdiff_t streamTell(SSStream* stream) {
  (void)stream;
  return (ptrdiff_t)position;
}

static void streamClose(SSStream* stream) {
  (void)stream;
  CHECK(isOpen);
  isOpen = 0;
}

static void* counted(void* block) {
  if (block != NULL) ++blocks;
  return block;
}

static void* poolAlloc(SSMemoryPool* pool, size_t size) {
  (void)pool;
  return counted(malloc(size));
}

static void poolFree(SSMemoryPool* pool, void* block) {
  (void)pool;
  --blocks;
  free(block);
}

static void* poolRealloc(SSMemoryPool* pool, void* block, size_t size) {
  (void)pool;
  return realloc(block, size);
}

static void* poolCalloc(SSMemoryPool* pool, size_t count, size_t size) {
  (void)pool;
  return counted(calloc(count, size));
}

static char* convertNothing(SSHostServices* services, char* text) {
  (void)services;
  return text;
}

static void* itemAlloc(void* context, void* block, size_t size, uint32_t flags) {
  CHECK(context == &blocks && block == NULL && flags == 0);
  return counted(malloc(size));
}

/* Reads the worksheet to its end; returns its number of cells, and in `text` the text of (2, 4). */
static int readSheet(const SSReaderInterface* table, QPSReader* reader, uint32_t start,
                     char* text) {
  QPSSheet* sheet = table->initSheet(reader, &blocks, start, itemAlloc, NULL);
  CHECK(sheet != NULL);
  int cells = 0;
  SSItem item;
  while (table->processSheet(sheet, &item) == 0) {
    char* owned = NULL;
    if (item.kind == SSItemKindCell) {
      ++cells;
      owned = item.cell.text;
      if (item.cell.column == 2 && item.cell.row == 4) {
        strcpy(text, owned);
        QPSCellValue value;
        CHECK(QPSGetCellValue(sheet, &value) == 0 && value.kind == QPSCellNumber);
        CHECK(value.number > 45291 && value.showsDateOrTime != 0);
      }
    } else if (item.kind == SSItemKindRecord37Text || item.kind == SSItemKindRecord38Text) {
      owned = item.notebookText.text;
    }
    if (owned != NULL) poolFree(NULL, owned);
  }
  CHECK(table->closeSheet(sheet) == 0);
  return cells;
}

int main(int argc, char** argv) {
  CHECK(argc == 2);
  FILE* input = fopen(argv[1], "rb");
  CHECK(input != NULL);
  fileBytes = fread(file, 1, sizeof file, input);
  fclose(input);

  SSStream stream = {.open = streamOpen,
                     .read = streamRead,
                     .seek = streamSeek,
                     .tell = streamTell,
                     .close = streamClose};
  SSHostServices services = {
      .pool = {.alloc = poolAlloc, .free = poolFree, .realloc = poolRealloc, .calloc = poolCalloc},
      .toLowerText = convertNothing,
      .toUpperText = convertNothing};

  SSReaderInterface table;
  qpsGetSSReaderInterface(&table);
  QPSReader* reader = table.allocateReader(NULL, NULL, &stream, &services, NULL, NULL);
  CHECK(reader != NULL);
  uint32_t charSet = 1;
  CHECK(table.getCharSet(reader, &charSet) == 0 && charSet == 0);

  SSWorkSheetList list = {0xA5A5A5A5u, NULL};
  CHECK(table.getWorkSheetInfo(reader, &list, 0) == 1 && list.count == 2);
  CHECK(strcmp(list.entries[0].name, "Budget") == 0 && strcmp(list.entries[1].name, "Car") == 0);
  char text[64];
  CHECK(readSheet(&table, reader, list.entries[0].startOffset, text) == 47);
  CHECK(strcmp(text, "01-Jan-24") == 0);
  CHECK(readSheet(&table, reader, list.entries[1].startOffset, text) == 21);
  CHECK(strcmp(text, "09:45") == 0);
  table.closeReader(reader);
  CHECK(blocks == 0 && !isOpen);

  char number[16] = "1.5E+07";
  qps2to3E(number);
  CHECK(strcmp(number, "1.5E+007") == 0);
  CHECK(strcmp(qpsUSERDEFINE[22].token, "S") == 0 && qpsUSERDEFINE[22].field == 16);
  return 0;
}
