// SPDX-License-Identifier: MIT
#include "viewer/module/cells.h"

#include <chrono>
#include <cmath>
#include <cstdio>
#include <optional>

namespace qps {
namespace {

const char* kindOf(const CellValue& value, const NumberFormat& format) {
  switch (value.kind()) {
    case CellValue::Kind::kBlank:
      return "blank";
    case CellValue::Kind::kText:
      return "text";
    case CellValue::Kind::kError:
      return "error";
    case CellValue::Kind::kNumber:
      break;
  }
  if (!value.dateTime()) return "number";
  if (format.showsDate && format.showsTime) return "datetime";
  return format.showsDate ? "date" : "time";
}

// "1994-07-08T09:30:00", or the part that the format shows. Years have four digits, and a sign with
// six where those do not do, as JavaScript's Date wants it.
std::string isoText(const DateTime& when, const NumberFormat& format) {
  char text[40];
  std::string result;
  if (format.showsDate) {
    const int year = static_cast<int>(when.date.year());
    const bool four = year >= 0 && year <= 9999;
    std::snprintf(text, sizeof text, four ? "%04d-%02u-%02u" : "%+07d-%02u-%02u", year,
                  static_cast<unsigned>(when.date.month()), static_cast<unsigned>(when.date.day()));
    result = text;
  }
  if (format.showsTime) {
    const auto seconds = static_cast<int>(when.timeOfDay.count());
    std::snprintf(text, sizeof text, "%s%02d:%02d:%02d", result.empty() ? "" : "T", seconds / 3600,
                  seconds / 60 % 60, seconds % 60);
    result += text;
  }
  return result;
}

void putDouble(Json& json, double number) {
  json.Key("value");
  if (std::isfinite(number))
    json.Double(number);
  else
    json.String(std::isnan(number) ? "NaN" : number > 0 ? "Infinity" : "-Infinity");
}

}  // namespace

void CellWriter::write(const Item& item, const CellView& cell, Json& json) {
  const CellValue value = cell.value();
  const NumberFormat format = value.format();
  json.StartObject();
  putNumber(json, "row", cell.row());
  putNumber(json, "column", cell.column());
  if (cell.hasText()) {
    putText(json, "text", decoder_.decode(cell.text()));
  } else {
    json.Key("text");
    json.Null();
  }
  putText(json, "kind", kindOf(value, format));
  putValue(value, json);
  if (const auto when = value.dateTime()) putText(json, "date", isoText(*when, format));
  putBool(json, "isFormula", value.isFormula());
  putFormat(format, json);
  putStyle(item.raw().cell, json);
  json.EndObject();
}

void CellWriter::putValue(const CellValue& value, Json& json) {
  if (const auto number = value.number()) return putDouble(json, *number);
  if (const auto text = value.text()) return putText(json, "value", decoder_.decode(*text));
  json.Key("value");
  json.Null();
}

void CellWriter::putFormat(const NumberFormat& format, Json& json) {
  const std::string text = decoder_.decode(format.text.value_or(""));
  const std::string styleName = decoder_.decode(format.styleName);
  const auto [found, added] = formats_.try_emplace(
      {format.code, format.decimals, format.showsDate, format.showsTime, text, styleName},
      formats_.size());
  putNumber(json, "format", found->second);
  if (!added) return;
  json.Key("newFormat");
  json.StartObject();
  putNumber(json, "code", format.code);
  putNumber(json, "decimals", format.decimals);
  putBool(json, "showsDate", format.showsDate);
  putBool(json, "showsTime", format.showsTime);
  if (format.text) putText(json, "text", text);
  putText(json, "styleName", styleName);
  json.EndObject();
}

void CellWriter::putStyle(const SSItemCell& cell, Json& json) {
  const std::size_t known = styles_.size();
  const std::uint32_t number = styles_.numberOf(cell);
  putNumber(json, "style", number);
  if (styles_.size() == known) return;
  const CellStyle style = styles_.style(number);
  json.Key("newStyle");
  json.StartObject();
  json.Key("alignment");
  putAlignment(json, style);
  putColour(json, "fillColour", style.fillColour);
  putColour(json, "textColour", style.textColour);
  json.Key("borders");
  putBorders(json, style);
  json.Key("font");
  putFont(json, style.font, decoder_);
  json.EndObject();
}

}  // namespace qps
