/* SPDX-License-Identifier: MIT
 *
 * A whole host in C11: it loads the reader at run time, brings its own tables, lists the worksheets
 * of a notebook and prints their cells (row, column, text, value).
 *
 *     host FOLDER FILE     FOLDER holds libqpsreader.so.1 and zbolefio.dll
 *
 * Compiled with QPS_STATIC it takes the reader that it was linked with instead.
 *
 * It ends with status 1 and a message when the file cannot be read, is no notebook or is cut short;
 * damage inside a compound document it does not see (docs/hosting.md, "Is the sheet complete?").
 */
#define _POSIX_C_SOURCE 200809L
#include <dlfcn.h>
#include <errno.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <qpsreader/cell_value.h>
#include <qpsreader/host_tables.h>
#include <qpsreader/qps_reader.h>
#include <qpsreader/ss_item.h>
#include <qpsreader/worksheet_list.h>

/* The stream: a file of stdio. The table comes first, so that its address is the file's too. */
typedef struct FileStream {
  SSStream table;
  const char* path;
  FILE* file;       /* null when it is not open */
  const char* flaw; /* why it could not be read to its end, or null */
} FileStream;

/* Until the reader asks for the compound-document library. A plain notebook is read to its end
 * record and not beyond; the last sector of a compound document may be a short one. */
static int isPlain = 1;

static int32_t openFile(SSStream* stream) {
  FileStream* self = (FileStream*)stream;
  self->file = fopen(self->path, "rb");
  if (self->file == NULL) self->flaw = strerror(errno);
  return self->file != NULL;
}

static size_t readFile(SSStream* stream, void* buffer, size_t count) {
  FileStream* self = (FileStream*)stream;
  size_t got = fread(buffer, 1, count, self->file);
  if (got < count && self->flaw == NULL)
    self->flaw = ferror(self->file) ? strerror(errno) : isPlain ? "cut short" : NULL;
  return got;
}

static int32_t seekFile(SSStream* stream, ptrdiff_t offset, int32_t origin) {
  return fseek(((FileStream*)stream)->file, offset,
               origin == SSSeekFromStart ? SEEK_SET : SEEK_CUR) == 0;
}

static ptrdiff_t tellFile(SSStream* stream) {
  return ftell(((FileStream*)stream)->file);
}

/* Called after a refused open too. */
static void closeFile(SSStream* stream) {
  FileStream* self = (FileStream*)stream;
  if (self->file != NULL) fclose(self->file);
  self->file = NULL;
}

/* The pool: the C library's heap. A real host would count here, and refuse beyond a limit. */
static void* poolAlloc(SSMemoryPool* pool, size_t size) {
  (void)pool;
  return malloc(size);
}

static void poolFree(SSMemoryPool* pool, void* block) {
  (void)pool;
  free(block);
}

static void* poolRealloc(SSMemoryPool* pool, void* block, size_t size) {
  (void)pool;
  return realloc(block, size);
}

static void* poolCalloc(SSMemoryPool* pool, size_t count, size_t size) {
  (void)pool;
  return calloc(count, size);
}

/* Texts of cells; printCells frees them. */
static void* itemAlloc(void* context, void* block, size_t size, uint32_t flags) {
  (void)context, (void)block, (void)flags;
  return malloc(size);
}

/* The loader: a bare name means a file in the one folder that the user named, and no other. */
static const char* libraryFolder;

static void* loadFromFolder(const char* name) {
  char path[4096];
  int length = snprintf(path, sizeof path, "%s/%s", libraryFolder, name);
  if (length < 0 || (size_t)length >= sizeof path) return NULL;
  return dlopen(path, RTLD_NOW | RTLD_LOCAL);
}

static int32_t loadLibrary(SSHostServices* services, const char* name, void** handle) {
  (void)services;
  isPlain = 0;
  *handle = loadFromFolder(name);
  return *handle != NULL;
}

static void* getSymbol(SSHostServices* services, void* library, const char* symbol) {
  (void)services;
  return dlsym(library, symbol);
}

static void freeLibrary(SSHostServices* services, void* library) {
  (void)services;
  dlclose(library);
}

/* Names of months and weekdays, in ASCII. */
static char* toLowerText(SSHostServices* services, char* text) {
  (void)services;
  for (char* c = text; *c != '\0'; ++c)
    if (*c >= 'A' && *c <= 'Z') *c = (char)(*c + ('a' - 'A'));
  return text;
}

static char* toUpperText(SSHostServices* services, char* text) {
  (void)services;
  for (char* c = text; *c != '\0'; ++c)
    if (*c >= 'a' && *c <= 'z') *c = (char)(*c - ('a' - 'A'));
  return text;
}

/* The operations of the table, and the one beside it. */
typedef struct Reader {
  SSReaderInterface table;
  uint32_t (*getCellValue)(QPSSheet* sheet, QPSCellValue* value);
} Reader;

static int takeReader(Reader* reader) {
  void (*fill)(SSReaderInterface*) = NULL;
  reader->getCellValue = NULL;
#ifdef QPS_STATIC
  fill = qpsGetSSReaderInterface;
  reader->getCellValue = QPSGetCellValue;
#else
  void* library = loadFromFolder("libqpsreader.so.1");
  if (library == NULL) return 0;
  void* symbol = dlsym(library, "qpsGetSSReaderInterface");
  memcpy(&fill, &symbol, sizeof fill); /* ISO C has no cast from an object to a function */
  symbol = dlsym(library, "QPSGetCellValue");
  memcpy(&reader->getCellValue, &symbol, sizeof reader->getCellValue);
#endif
  if (fill == NULL || reader->getCellValue == NULL) return 0;
  fill(&reader->table);
  return 1;
}

/* Prints what the cell holds: a number to 15 digits, a date as its serial. */
static void printValue(const QPSCellValue* value) {
  if (value->kind == QPSCellNumber) printf("%.15g", value->number);
  if (value->kind == QPSCellText) fwrite(value->text, 1, value->textBytes, stdout);
  if (value->kind == QPSCellError) printf("ERR");
}

/* Prints the cells of one worksheet and frees the texts that are the host's. */
static int printCells(const Reader* reader, QPSReader* file, uint32_t startOffset) {
  QPSSheet* sheet = reader->table.initSheet(file, NULL, startOffset, itemAlloc, NULL);
  if (sheet == NULL) return 0;
  SSItem item = {0};
  while (reader->table.processSheet(sheet, &item) == 0) {
    char* text = NULL;
    QPSCellValue value;
    if (item.kind == SSItemKindCell) {
      text = item.cell.text;
      printf("%u\t%u\t%s\t", (unsigned)item.cell.row, (unsigned)item.cell.column,
             text == NULL ? "" : text);
      if (reader->getCellValue(sheet, &value) == 0) printValue(&value);
      putchar('\n');
    } else if (item.kind == SSItemKindRecord38Text || item.kind == SSItemKindRecord37Text) {
      text = item.notebookText.text;
    }
    free(text);
  }
  return reader->table.closeSheet(sheet) == 0;
}

int main(int argc, char** argv) {
  if (argc != 3) {
    fprintf(stderr, "usage: %s FOLDER FILE\n", argv[0]);
    return 2;
  }
  libraryFolder = argv[1];

  SSHostServices services = {.loadLibrary = loadLibrary,
                             .getSymbol = getSymbol,
                             .freeLibrary = freeLibrary,
                             .pool = {NULL, poolAlloc, poolFree, poolRealloc, poolCalloc},
                             .toLowerText = toLowerText,
                             .toUpperText = toUpperText};
  FileStream stream = {.table = {.open = openFile,
                                 .read = readFile,
                                 .seek = seekFile,
                                 .tell = tellFile,
                                 .close = closeFile},
                       .path = argv[2]};

  Reader reader;
  if (!takeReader(&reader)) {
    fprintf(stderr, "no reader in %s\n", libraryFolder);
    return 1;
  }
  QPSReader* file = reader.table.allocateReader(NULL, NULL, &stream.table, &services, NULL, NULL);
  SSWorkSheetList list = {0, NULL};
  int ok = file != NULL && reader.table.getWorkSheetInfo(file, &list, 0) == 1;
  for (uint32_t i = 0; i < list.count && ok; ++i) {
    const SSWorkSheetEntry* entry = &list.entries[i];
    if (entry->typeFlags == 0) continue; /* counted, but not described */
    printf("== %s\n", entry->name);
    ok = printCells(&reader, file, entry->startOffset);
  }
  reader.table.closeReader(file);
  if (ok && stream.flaw == NULL) return 0;
  fprintf(stderr, "%s: %s\n", argv[2], stream.flaw ? stream.flaw : "not a readable notebook");
  return 1;
}
