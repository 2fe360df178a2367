// SPDX-License-Identifier: MIT
#include "tool/json_forms.h"

#include <array>

#include "tool/text_forms.h"

namespace qps {
namespace {

const char* nameOf(HorizontalAlign align) {
  switch (align) {
    case HorizontalAlign::kLeft:
      return "left";
    case HorizontalAlign::kCentre:
      return "centre";
    case HorizontalAlign::kRight:
      return "right";
    case HorizontalAlign::kCentreAcross:
      return "centreAcross";
    case HorizontalAlign::kGeneral:
      break;
  }
  return "general";
}

const char* nameOf(VerticalAlign align) {
  switch (align) {
    case VerticalAlign::kTop:
      return "top";
    case VerticalAlign::kCentre:
      return "centre";
    case VerticalAlign::kBottom:
      return "bottom";
    case VerticalAlign::kDefault:
      break;
  }
  return "default";
}

const char* nameOf(BorderLine line) {
  switch (line) {
    case BorderLine::kThick:
      return "thick";
    case BorderLine::kDouble:
      return "double";
    default:
      return "thin";
  }
}

}  // namespace

void putText(Json& json, const char* name, std::string_view utf8) {
  json.Key(name);
  json.String(utf8.data(), static_cast<rapidjson::SizeType>(utf8.size()));
}

void putNumber(Json& json, const char* name, std::uint32_t value) {
  json.Key(name);
  json.Uint(value);
}

void putBool(Json& json, const char* name, bool value) {
  json.Key(name);
  json.Bool(value);
}

void putColour(Json& json, const char* name, SSColour colour) {
  if (colour != SS_NO_COLOUR) return putText(json, name, htmlColour(colour));
  json.Key(name);
  json.Null();
}

void putAlignment(Json& json, const CellStyle& style) {
  json.StartObject();
  putText(json, "horizontal", nameOf(style.horizontal));
  putText(json, "vertical", nameOf(style.vertical));
  json.EndObject();
}

void putBorders(Json& json, const CellStyle& style) {
  constexpr std::array<const char*, SSItemBorderSlots> kSides = {"left", "top", "right", "bottom"};
  json.StartObject();
  for (std::size_t side = 0; side < kSides.size(); ++side) {
    const Border& border = style.borders[side];
    if (border.line == BorderLine::kNone) continue;
    json.Key(kSides[side]);
    json.StartObject();
    putText(json, "line", nameOf(border.line));
    putColour(json, "colour", border.colour);
    json.EndObject();
  }
  json.EndObject();
}

void putFont(Json& json, const std::optional<Font>& font, const Decoder& decoder) {
  if (!font) {
    json.Null();
    return;
  }
  json.StartObject();
  putText(json, "name", decoder.decode(font->name));
  putNumber(json, "size", font->size);
  putBool(json, "bold", font->bold);
  putBool(json, "italic", font->italic);
  putBool(json, "underline", font->underline);
  putBool(json, "strikeOut", font->strikeOut);
  json.EndObject();
}

}  // namespace qps
