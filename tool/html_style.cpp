// SPDX-License-Identifier: MIT
#include "tool/html_style.h"

#include <array>
#include <cstddef>

#include "tool/text_forms.h"

namespace qps {
namespace {

const char* cssOf(HorizontalAlign align) {
  switch (align) {
    case HorizontalAlign::kCentre:
    case HorizontalAlign::kCentreAcross:
      return "center";
    case HorizontalAlign::kRight:
      return "right";
    default:
      return "left";
  }
}

const char* cssOf(VerticalAlign align) {
  switch (align) {
    case VerticalAlign::kTop:
      return "top";
    case VerticalAlign::kCentre:
      return "middle";
    default:
      return "bottom";
  }
}

const char* cssOf(BorderLine line) {
  switch (line) {
    case BorderLine::kDouble:
      return "3px double ";
    case BorderLine::kThick:
      return "2px solid ";
    default:
      return "1px solid ";
  }
}

// What stands in for a font that the browser does not have.
const char* genericFamily(std::string_view name) {
  struct Row {
    std::string_view part;
    const char* family;
  };
  constexpr std::array<Row, 8> kRows = {{{"Courier", "monospace"},
                                         {"Mono", "monospace"},
                                         {"Typewriter", "monospace"},
                                         {"Times", "serif"},
                                         {"Roman", "serif"},
                                         {"Bookman", "serif"},
                                         {"Garamond", "serif"},
                                         {"Schoolbook", "serif"}}};
  for (const Row& row : kRows)
    if (name.find(row.part) != std::string_view::npos) return row.family;
  return "sans-serif";
}

// As a CSS string inside of a <style> element: what could end either is written as a number.
void appendCssString(std::string_view utf8, std::string& css) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  css += '"';
  for (const char c : utf8) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x20 || byte == 0x7F ||
        std::string_view("\"\\<>&").find(c) != std::string_view::npos) {
      css += '\\';
      css += kDigits[byte >> 4];
      css += kDigits[byte & 0xF];
      css += ' ';
    } else {
      css += c;
    }
  }
  css += '"';
}

void appendFont(const Font& font, const Decoder& decoder, std::string& css) {
  const std::string name = decoder.decode(font.name);
  if (!name.empty()) {
    css += ";font-family:";
    appendCssString(name, css);
    css.append(",").append(genericFamily(name));
  }
  if (font.size > 0) css += ";font-size:" + std::to_string(font.size) + "pt";
  if (font.bold) css += ";font-weight:bold";
  if (font.italic) css += ";font-style:italic";
  if (font.underline || font.strikeOut) {
    css += ";text-decoration:";
    css += font.underline ? "underline" : "";
    css += font.underline && font.strikeOut ? " " : "";
    css += font.strikeOut ? "line-through" : "";
  }
}

}  // namespace

std::string points(std::uint64_t twentieths) {
  std::string text = std::to_string(twentieths / 20);
  const std::uint64_t hundredths = twentieths % 20 * 5;
  if (hundredths > 0) {
    text.append(hundredths < 10 ? ".0" : ".").append(std::to_string(hundredths));
    if (text.ends_with('0')) text.pop_back();
  }
  return text + "pt";
}

std::string cssOf(const CellStyle& style, const Decoder& decoder) {
  constexpr std::array<const char*, SSItemBorderSlots> kSides = {"left", "top", "right", "bottom"};
  std::string css = std::string("text-align:") + cssOf(style.horizontal) +
                    ";vertical-align:" + cssOf(style.vertical);
  if (style.textColour != SS_NO_COLOUR) css += ";color:" + htmlColour(style.textColour);
  if (style.fillColour != SS_NO_COLOUR) css += ";background-color:" + htmlColour(style.fillColour);
  for (std::size_t side = 0; side < kSides.size(); ++side) {
    const Border& border = style.borders[side];
    if (border.line == BorderLine::kNone) continue;
    css.append(";border-").append(kSides[side]).append(":").append(cssOf(border.line));
    css += border.colour == SS_NO_COLOUR ? "#000000" : htmlColour(border.colour);
  }
  if (style.font) appendFont(*style.font, decoder, css);
  return css;
}

// Gridlines are dotted, and headings have none, so that a cell's own line wins wherever two meet.
// Column letters and row numbers are generated: they are not part of the page's text.
std::string_view pageStyles() {
  return R"(body{margin:1em;background:#fff;color:#000;font:10pt Arial,sans-serif}
h1{font-size:14pt}
h2{font-size:12pt;margin:1.5em 0 .5em}
nav{position:sticky;top:0;background:#fff;padding:.3em 0;z-index:1}
nav a{display:inline-block;padding:.2em .8em;border:1px solid #808080;border-radius:.4em .4em 0 0;background:#e8e8e8;color:#000;text-decoration:none}
section{overflow-x:auto}
table{border-collapse:collapse;table-layout:fixed;line-height:1.1}
td{border:1px dotted #c0c0c0;padding:0 2px;overflow:hidden;white-space:pre;vertical-align:bottom}
td.o{overflow:visible}
td.o>div{overflow:hidden}
th{padding:0;box-shadow:inset -1px -1px #b0b0b0;background:#e8e8e8;color:#404040;font:8pt Arial,sans-serif;text-align:center;overflow:hidden}
th::before{content:attr(data-n)}
tr{height:var(--h)}
tr.gap td{background:#f4f4f4}
)";
}

void appendHtml(std::string_view utf8, std::string& result) {
  for (std::size_t i = 0; i < utf8.size(); ++i) {
    const char c = utf8[i];
    const auto byte = static_cast<unsigned char>(c);
    switch (c) {
      case '&':
        result += "&amp;";
        break;
      case '<':
        result += "&lt;";
        break;
      case '>':
        result += "&gt;";
        break;
      case '"':
        result += "&quot;";
        break;
      case '\r':
        if (i + 1 == utf8.size() || utf8[i + 1] != '\n') result += '\n';
        break;
      case '\n':
      case '\t':
        result += c;
        break;
      default:
        if (byte < 0x20 || byte == 0x7F)
          appendVisible({&c, 1}, result);
        else if (byte == 0xC2 && i + 1 < utf8.size() &&
                 static_cast<unsigned char>(utf8[i + 1]) < 0xA0)
          appendVisible(utf8.substr(i++, 2), result);
        else
          result += c;
    }
  }
}

}  // namespace qps
