// SPDX-License-Identifier: MIT
//
// libxlsxwriter, loaded when it is needed: it brings others along, and programs that only print
// text would start twice as slowly.
#ifndef QPSREADER_TOOL_XLSX_LIBRARY_H
#define QPSREADER_TOOL_XLSX_LIBRARY_H

#include <xlsxwriter.h>

#include <cstdint>
#include <string>

namespace qps {

// clang-format off
#define QPS_XLSX_FUNCTIONS(F) \
  F(workbook_new_opt) \
  F(workbook_add_worksheet) \
  F(workbook_add_format) \
  F(workbook_set_properties) \
  F(workbook_close) \
  F(lxw_strerror) \
  F(worksheet_write_number) \
  F(worksheet_write_string) \
  F(worksheet_write_blank) \
  F(worksheet_set_row_opt) \
  F(worksheet_set_column_pixels_opt) \
  F(worksheet_set_default_row) \
  F(format_set_num_format) \
  F(format_set_font_name) \
  F(format_set_font_size) \
  F(format_set_font_color) \
  F(format_set_bold) \
  F(format_set_italic) \
  F(format_set_underline) \
  F(format_set_font_strikeout) \
  F(format_set_pattern) \
  F(format_set_fg_color) \
  F(format_set_align) \
  F(format_set_left) \
  F(format_set_top) \
  F(format_set_right) \
  F(format_set_bottom) \
  F(format_set_left_color) \
  F(format_set_top_color) \
  F(format_set_right_color) \
  F(format_set_bottom_color)
// clang-format on

// Its functions by their own names.
struct XlsxLibrary {
// A name cannot stand in parentheses. NOLINTNEXTLINE(bugprone-macro-parentheses)
#define QPS_MEMBER(name) decltype(&::name) name;
  QPS_XLSX_FUNCTIONS(QPS_MEMBER)
#undef QPS_MEMBER
};

// Throws Failure when it cannot be loaded. It stays loaded.
const XlsxLibrary& xlsxLibrary();

// What the library writes besides the file itself, while this lives (one at a time): temporary
// files without a name, in a folder. The library does not look whether they could be written; this
// does. Its own messages on standard error are swallowed meanwhile.
class XlsxTemporaries {
 public:
  // `mostBytes` is for all of them together; 0 is no limit.
  XlsxTemporaries(std::string folder, std::uint64_t mostBytes);
  ~XlsxTemporaries();
  XlsxTemporaries(const XlsxTemporaries&) = delete;
  XlsxTemporaries& operator=(const XlsxTemporaries&) = delete;

  // Throws WriteError or Failure when something could not be written.
  void check() const;

  // For the library.
  std::FILE* make();
  long write(int file, const char* bytes, std::size_t size);

 private:
  std::string folder_;
  std::uint64_t bytesLeft_;
  std::FILE* standardError_;
  std::FILE* nothing_;
  int error_ = 0;  // the first errno
  bool tooMuch_ = false;
};

}  // namespace qps

#endif  // QPSREADER_TOOL_XLSX_LIBRARY_H
