/* SPDX-License-Identifier: MIT
 *
 * The version of the reader, of its public headers and of the host library, written here only: the
 * build reads it from this file.
 *
 * Versions are MAJOR.MINOR.PATCH. Within one MAJOR:
 *
 *   API  what compiles against a header of this folder compiles against later ones. Operations,
 *        constants and headers are added, and none is taken away or changes its meaning.
 *   ABI  of the C headers and the two shared libraries (libqpsreader and zbolefio.dll): what was
 *        built with an earlier version runs with a later one. Exported names, slots of the tables,
 *        and sizes and offsets of the structures stay; what is added comes with a MINOR. The C++
 *        headers in host/ have no such promise: they belong to the archive they were built with.
 *   Text a display text changes only where it was wrong.
 *
 * The file name of the shared library carries MAJOR (libqpsreader.so.1).
 *
 * The C headers compile without a warning as C99 and C++11 and as every later standard of both.
 */
#ifndef QPSREADER_VERSION_H
#define QPSREADER_VERSION_H

#define QPSREADER_VERSION_MAJOR 1
#define QPSREADER_VERSION_MINOR 1
#define QPSREADER_VERSION_PATCH 0

/* The version as a number that grows: 10203 is 1.2.3. */
#define QPSREADER_VERSION \
  (QPSREADER_VERSION_MAJOR * 10000 + QPSREADER_VERSION_MINOR * 100 + QPSREADER_VERSION_PATCH)

/* The version as a text: "1.2.3". */
#define QPSREADER_VERSION_STRING          \
  QPSREADER_TEXT(QPSREADER_VERSION_MAJOR) \
  "." QPSREADER_TEXT(QPSREADER_VERSION_MINOR) "." QPSREADER_TEXT(QPSREADER_VERSION_PATCH)
#define QPSREADER_TEXT(number) QPSREADER_TEXT_OF(number)
#define QPSREADER_TEXT_OF(number) #number

#endif /* QPSREADER_VERSION_H */
