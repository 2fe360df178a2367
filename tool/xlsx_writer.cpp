// SPDX-License-Identifier: MIT
//
// An .xlsx workbook: numbers as numbers with the number formats that show them as the notebook
// does, labels as texts, and the notebook's look. Rows go to the file as they come, so that a
// workbook costs no memory; its strings then stand in its cells.
#include <algorithm>
#include <array>
#include <cmath>
#include <ctime>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>

#include "tool/commands.h"
#include "tool/document.h"
#include "tool/output.h"
#include "tool/text_forms.h"
#include "tool/xlsx_library.h"
#include "tool/xlsx_names.h"
#include "tool/xlsx_number_format.h"

namespace qps {
namespace {

// Spreadsheet programs load no more: of number formats that are not built in, and of cell formats.
constexpr std::size_t kMostNumberFormats = 200;
constexpr std::size_t kMostLooks = 64000;

// In place of a number of Document::formats: shows nothing.
constexpr std::uint32_t kNothingNumber = 0xFFFFFFFF;

// What a workbook would say of a time that nobody knows: the same bytes for the same notebook.
constexpr std::time_t kCreated = 946684800;  // 2000-01-01

// The workbook measures columns in pixels of 1/96 inch, and rows in points.
constexpr double kTwipsPerPixel = 15;
constexpr double kTwipsPerPoint = 20;
constexpr std::uint32_t kDefaultPixels = 64;
constexpr std::uint32_t kMostPixels = 1790;  // 255 characters
constexpr double kMostPoints = 409.5;

// Red and blue change places; black is not 0, which is none.
lxw_color_t xlsxColour(SSColour colour) {
  const std::uint32_t rgb = (colour & 0xFF) << 16 | (colour & 0xFF00) | (colour >> 16 & 0xFF);
  return rgb == 0 ? static_cast<lxw_color_t>(LXW_COLOR_BLACK) : rgb;
}

std::uint8_t xlsxLine(BorderLine line) {
  switch (line) {
    case BorderLine::kNone:
      return LXW_BORDER_NONE;
    case BorderLine::kThick:
      return LXW_BORDER_THICK;
    case BorderLine::kDouble:
      return LXW_BORDER_DOUBLE;
    default:
      return LXW_BORDER_THIN;
  }
}

std::uint8_t xlsxAlign(HorizontalAlign align) {
  switch (align) {
    case HorizontalAlign::kLeft:
      return LXW_ALIGN_LEFT;
    case HorizontalAlign::kCentre:
      return LXW_ALIGN_CENTER;
    case HorizontalAlign::kRight:
      return LXW_ALIGN_RIGHT;
    case HorizontalAlign::kCentreAcross:
      return LXW_ALIGN_CENTER_ACROSS;
    case HorizontalAlign::kGeneral:
      break;
  }
  return LXW_ALIGN_NONE;
}

std::uint8_t xlsxAlign(VerticalAlign align) {
  switch (align) {
    case VerticalAlign::kTop:
      return LXW_ALIGN_VERTICAL_TOP;
    case VerticalAlign::kCentre:
      return LXW_ALIGN_VERTICAL_CENTER;
    default:
      return LXW_ALIGN_NONE;  // the bottom
  }
}

class XlsxWriter {
 public:
  XlsxWriter(const std::string& path, const Document& document)
      : lxw_(xlsxLibrary()), document_(document), decoder_(*document.decoder) {
    lxw_workbook_options options{};
    options.constant_memory = LXW_TRUE;
    workbook_.reset(lxw_.workbook_new_opt(path.c_str(), &options));
    if (workbook_ == nullptr) throw std::bad_alloc();
    lxw_doc_properties properties{};
    properties.created = kCreated;
    check(lxw_.workbook_set_properties(workbook_.get(), &properties));
    for (std::uint32_t number = 0; number < document.formats.size(); ++number)
      numberFormats_.push_back(numberFormatOf(document.formats[number]));
  }

  void write(const SheetData& sheet);
  void close() { check(lxw_.workbook_close(workbook_.release())); }

  std::string warning() const;

 private:
  struct NumberFormat {
    std::optional<XlsxNumberFormat> format;
    bool isUsed = false;
  };

  void check(lxw_error error) const;
  NumberFormat numberFormatOf(const FormatFacts& format) const;
  const XlsxNumberFormat* usable(std::uint32_t number);
  void setColumns(const SheetData& sheet);
  void setRow(const Run& height);
  void writeCell(const Cell& cell, const CellContents& contents);
  void writeText(const Cell& cell, lxw_format* look, const char* text);
  lxw_format* lookOf(std::uint32_t style, std::uint32_t number);
  lxw_format* makeLook(const CellStyle& style, const XlsxNumberFormat* format);
  void setFont(lxw_format* look, const CellStyle& style);
  void setBorders(lxw_format* look, const CellStyle& style);

  const XlsxLibrary& lxw_;
  const Document& document_;
  const Decoder& decoder_;
  std::unique_ptr<lxw_workbook, decltype(lxw_.workbook_close)> workbook_{nullptr,
                                                                         lxw_.workbook_close};
  lxw_worksheet* worksheet_ = nullptr;
  std::array<std::uint32_t, 257> widths_{};  // of the worksheet
  XlsxSheetNames names_;
  std::vector<NumberFormat> numberFormats_;  // by the number of Document::formats
  std::set<std::string> customFormats_;      // those that are used
  std::map<std::pair<std::uint32_t, std::uint32_t>, lxw_format*> looks_;
  std::uint64_t asTexts_ = 0;      // numbers and errors
  std::uint64_t withoutLook_ = 0;  // cells
};

void XlsxWriter::check(lxw_error error) const {
  if (error == LXW_NO_ERROR) return;
  throw Failure{Status::kFailed, std::string("the workbook: ") + lxw_.lxw_strerror(error)};
}

XlsxWriter::NumberFormat XlsxWriter::numberFormatOf(const FormatFacts& format) const {
  return {xlsxNumberFormatOf(format, document_.notebook.facts().formatVersion, decoder_)};
}

// Null when the notebook's format has no equivalent, or the workbook has no room for another.
const XlsxNumberFormat* XlsxWriter::usable(std::uint32_t number) {
  static const XlsxNumberFormat kNothing{";;;"};
  if (number == kNothingNumber) return &kNothing;
  NumberFormat& entry = numberFormats_[number];
  if (!entry.format) return nullptr;
  if (entry.isUsed || entry.format->text == "General") return &*entry.format;
  if (!customFormats_.contains(entry.format->text)) {
    if (customFormats_.size() == kMostNumberFormats) {
      entry.format.reset();
      return nullptr;
    }
    customFormats_.insert(entry.format->text);
  }
  entry.isUsed = true;
  return &*entry.format;
}

void XlsxWriter::write(const SheetData& sheet) {
  worksheet_ = lxw_.workbook_add_worksheet(workbook_.get(), names_.make(sheet.name).c_str());
  if (worksheet_ == nullptr)
    throw Failure{Status::kFailed, "the workbook cannot hold worksheet '" + sheet.name + "'"};
  setColumns(sheet);
  if (sheet.info.defaultRowHeight != 0)
    lxw_.worksheet_set_default_row(
        worksheet_, std::min(sheet.info.defaultRowHeight / kTwipsPerPoint, kMostPoints), LXW_FALSE);

  auto height = sheet.rowHeights.begin();
  for (std::size_t i = 0; i < sheet.cells.size(); ++i) {
    const Cell& cell = sheet.cells[i];
    for (; height != sheet.rowHeights.end() && height->first <= cell.place.row(); ++height)
      setRow(*height);
    writeCell(cell, sheet.contents[i]);
  }
  for (; height != sheet.rowHeights.end(); ++height)
    setRow(*height);
}

void XlsxWriter::setColumns(const SheetData& sheet) {
  widths_ = sheet.widths();
  for (std::size_t first = 1, end; first < widths_.size(); first = end) {
    for (end = first + 1; end < widths_.size() && widths_[end] == widths_[first];)
      ++end;
    const auto pixels = std::min(
        static_cast<std::uint32_t>(std::lround(widths_[first] / kTwipsPerPixel)), kMostPixels);
    const bool isHidden = widths_[first] == 0;
    if (pixels == kDefaultPixels) continue;
    lxw_row_col_options options{};
    options.hidden = isHidden ? LXW_TRUE : LXW_FALSE;
    check(lxw_.worksheet_set_column_pixels_opt(
        worksheet_, static_cast<lxw_col_t>(first - 1), static_cast<lxw_col_t>(end - 2),
        isHidden ? kDefaultPixels : std::max(pixels, 1U), nullptr, &options));
  }
}

void XlsxWriter::setRow(const Run& height) {
  lxw_row_col_options options{};
  options.hidden = height.size == 0 ? LXW_TRUE : LXW_FALSE;
  const double points =
      height.size == 0 ? LXW_DEF_ROW_HEIGHT : std::min(height.size / kTwipsPerPoint, kMostPoints);
  check(lxw_.worksheet_set_row_opt(worksheet_, height.first - 1, points, nullptr, &options));
}

void XlsxWriter::writeCell(const Cell& cell, const CellContents& contents) {
  const lxw_row_t row = cell.place.row() - 1;
  const auto column = static_cast<lxw_col_t>(cell.place.column() - 1);
  lxw_format* const look = lookOf(cell.style, contents.format());
  switch (contents.type()) {
    case ValueType::kBlank:
      return check(lxw_.worksheet_write_blank(worksheet_, row, column, look));
    case ValueType::kText:
      return writeText(cell, look, contents.text());
    case ValueType::kError:
      ++asTexts_;
      return writeText(cell, look, "ERR");
    default:
      break;
  }
  const XlsxNumberFormat* const format = usable(contents.format());
  const bool isEquivalent = format != nullptr && format->shows(contents.number());
  if (!isEquivalent && cell.text != nullptr) {
    ++asTexts_;
    return writeText(cell, look, cell.text);
  }
  // What shows nothing keeps its number.
  const bool showsNothing = !isEquivalent && widths_[cell.place.column()] != 0;
  check(lxw_.worksheet_write_number(worksheet_, row, column, contents.number(),
                                    showsNothing ? lookOf(cell.style, kNothingNumber) : look));
}

void XlsxWriter::writeText(const Cell& cell, lxw_format* look, const char* text) {
  check(lxw_.worksheet_write_string(worksheet_, cell.place.row() - 1,
                                    static_cast<lxw_col_t>(cell.place.column() - 1),
                                    xlsxText(decoder_.decode(text)).c_str(), look));
}

lxw_format* XlsxWriter::lookOf(std::uint32_t style, std::uint32_t number) {
  const auto known = looks_.find({style, number});
  if (known != looks_.end()) return known->second;
  if (looks_.size() == kMostLooks) {
    ++withoutLook_;
    return nullptr;
  }
  lxw_format* const look = makeLook(document_.styles.style(style), usable(number));
  looks_.emplace(std::pair(style, number), look);
  return look;
}

lxw_format* XlsxWriter::makeLook(const CellStyle& style, const XlsxNumberFormat* format) {
  lxw_format* const look = lxw_.workbook_add_format(workbook_.get());
  if (look == nullptr) throw std::bad_alloc();
  if (format != nullptr && format->text != "General")
    lxw_.format_set_num_format(look, format->text.c_str());
  setFont(look, style);
  setBorders(look, style);
  // A white cell looks like one without a colour, which lets the grid be seen.
  if (style.fillColour != SS_NO_COLOUR && style.fillColour != 0xFFFFFF) {
    lxw_.format_set_pattern(look, LXW_PATTERN_SOLID);
    lxw_.format_set_fg_color(look, xlsxColour(style.fillColour));
  }
  lxw_.format_set_align(look, xlsxAlign(style.horizontal));
  lxw_.format_set_align(look, xlsxAlign(style.vertical));
  return look;
}

void XlsxWriter::setFont(lxw_format* look, const CellStyle& style) {
  if (style.textColour != 0 && style.textColour != SS_NO_COLOUR)
    lxw_.format_set_font_color(look, xlsxColour(style.textColour));
  if (!style.font) return;
  const std::string name = xlsxName(decoder_.decode(style.font->name));
  if (!name.empty()) lxw_.format_set_font_name(look, name.c_str());
  lxw_.format_set_font_size(look, style.font->size == 0 ? 10 : style.font->size);
  if (style.font->bold) lxw_.format_set_bold(look);
  if (style.font->italic) lxw_.format_set_italic(look);
  if (style.font->underline) lxw_.format_set_underline(look, LXW_UNDERLINE_SINGLE);
  if (style.font->strikeOut) lxw_.format_set_font_strikeout(look);
}

void XlsxWriter::setBorders(lxw_format* look, const CellStyle& style) {
  struct Side {
    decltype(lxw_.format_set_left) setLine;
    decltype(lxw_.format_set_left_color) setColour;
  };
  const Side sides[] = {{lxw_.format_set_left, lxw_.format_set_left_color},
                        {lxw_.format_set_top, lxw_.format_set_top_color},
                        {lxw_.format_set_right, lxw_.format_set_right_color},
                        {lxw_.format_set_bottom, lxw_.format_set_bottom_color}};
  for (std::size_t i = 0; i < style.borders.size(); ++i) {
    const Border& border = style.borders[i];
    if (border.line == BorderLine::kNone) continue;
    sides[i].setLine(look, xlsxLine(border.line));
    if (border.colour != SS_NO_COLOUR) sides[i].setColour(look, xlsxColour(border.colour));
  }
}

std::string XlsxWriter::warning() const {
  std::string text;
  if (asTexts_ > 0)
    text = counted(asTexts_, "number") + " without an equivalent in a workbook; " +
           (asTexts_ == 1 ? "it is a text" : "they are texts");
  if (withoutLook_ > 0)
    text += (text.empty() ? "" : "; ") + counted(withoutLook_, "cell") +
            " without a look: a workbook holds 64,000";
  return text;
}

}  // namespace

void prepareXlsx() {
  xlsxLibrary();
}

std::string writeXlsx(const std::filesystem::path& path, const Document& document,
                      std::uint64_t mostOutput) {
  XlsxTemporaries temporaries(path.parent_path().string(), mostOutput);
  XlsxWriter writer(path.string(), document);
  try {
    for (const SheetData& sheet : document.sheets)
      writer.write(sheet);
    writer.close();
  } catch (const Failure&) {
    temporaries.check();
    throw;
  }
  temporaries.check();
  return writer.warning();
}

}  // namespace qps
