// SPDX-License-Identifier: MIT
#include "tool/html_style.h"

#include <algorithm>
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

// For cells of tables, and of the grids that large sheets are.
const char* cssOf(VerticalAlign align) {
  switch (align) {
    case VerticalAlign::kTop:
      return ";vertical-align:top;align-content:start";
    case VerticalAlign::kCentre:
      return ";vertical-align:middle;align-content:center";
    default:
      return ";vertical-align:bottom";
  }
}

// What begins with the width.
std::string_view cssOf(BorderLine line) {
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
  const std::string name = visible(decoder.decode(font.name));
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

bool isNumber(ValueType type) {
  return type != ValueType::kText && type != ValueType::kBlank;
}

std::string cssOf(const CellStyle& style, const Decoder& decoder) {
  constexpr std::array<const char*, SSItemBorderSlots> kSides = {"left", "top", "right", "bottom"};
  constexpr std::size_t kRight = 2;
  std::string css = std::string("text-align:") + cssOf(style.horizontal) + cssOf(style.vertical);
  if (style.textColour != SS_NO_COLOUR) css += ";color:" + htmlColour(style.textColour);
  if (style.fillColour != SS_NO_COLOUR) css += ";background-color:" + htmlColour(style.fillColour);
  for (std::size_t side = 0; side < kSides.size(); ++side) {
    const Border& border = style.borders[side];
    if (border.line == BorderLine::kNone) continue;
    css.append(";border-").append(kSides[side]).append(":").append(cssOf(border.line));
    css += border.colour == SS_NO_COLOUR ? "#000000" : htmlColour(border.colour);
    // In a table the lines of neighbours are one. In a grid those to the left and above lie over
    // the neighbour's; margins have no effect on cells of a table.
    if (side < kRight)
      css.append(";margin-").append(kSides[side]).append(":-").append(cssOf(border.line), 0, 3);
  }
  if (style.font) appendFont(*style.font, decoder, css);
  return css;
}

// The sheet is paper, white in a dark room too: its colours are the author's. The window scrolls,
// and nothing in it does, so that tabs, column letters and row numbers can stick to its edges.
// Column letters and row numbers are generated: they are not part of the page's text.
//
// Whether a number fits its column, only the browser's own layout can tell. `.n` lets a line break
// in front of the number and nowhere else, at a soft hyphen that is written as marks; the second
// line, to which a number that does not fit moves, is out of sight. A line cannot break in front of
// "-" or ".", so that a sign that has no looks (U+2061) stands there first.
//
// The rows of a table are laid out all or none. Those of a large sheet are grids instead, and only
// the ones near the window are laid out.
//
// Gridlines are dotted, and headings have none, so that a cell's own line wins wherever two meet.
// In a large sheet they are backgrounds.
std::string_view pageStyles() {
  return R"(html{color-scheme:light dark;--bar:#e8e8e8;--ink:#303030;--room:#fff;--tabs:0px;scroll-padding-top:var(--tabs);container-type:inline-size}
body{margin:0;width:max-content;min-width:100%;background:#fff;color:#000;font:10pt Arial,sans-serif}
html:has(.tabs){--tabs:2.8rem}
header,nav,h2,.note{position:sticky;left:0;width:100vw;width:100cqw;box-sizing:border-box;padding:.3rem 1rem;margin:0}
header,nav{background:var(--room);color:var(--ink)}
h1{font-size:14pt;overflow-wrap:anywhere}
h2{font-size:12pt}
.damage{padding:.5rem;border:2px solid #b00000;background:#fff0f0;color:#800000;overflow-wrap:anywhere}
nav{top:0;z-index:4;height:var(--tabs);display:flex;gap:.2rem;overflow:auto hidden;white-space:pre}
nav a{flex:none;height:1.6rem;line-height:1.6rem;padding:0 .8rem;border:1px solid #808080;border-radius:.4rem .4rem 0 0;background:var(--bar);color:var(--ink);text-decoration:none}
section{content-visibility:auto;color-scheme:light;background:#fff;padding-bottom:2rem}
table{border-collapse:collapse;table-layout:fixed;line-height:1.1;width:var(--w);color:#000;background-image:var(--g)}
td{border:1px dotted #c0c0c0;padding:0 2px;white-space:pre;vertical-align:bottom}
.c{overflow:hidden}
td>div{display:flex;overflow:clip}
.n>div{display:block;height:1.1em;white-space:normal;hyphens:manual}
.n1>div{hyphenate-character:"#"}
.n2>div{hyphenate-character:"##"}
.n3>div{hyphenate-character:"###"}
.n4>div{hyphenate-character:"####"}
.n5>div{hyphenate-character:"#####"}
.n>div::before{content:"\2060\AD"}
.n span::before{content:"\2061"}
.n span{white-space:pre}
th{position:sticky;left:0;z-index:2;padding:0;box-shadow:inset -1px -1px #b0b0b0;background:var(--bar);color:var(--ink);font:8pt Arial,sans-serif;text-align:center;overflow:hidden}
thead th{left:auto;top:var(--tabs);z-index:2}
thead td{position:sticky;left:0;top:var(--tabs);z-index:3;border:0;background:var(--bar)}
th::before{content:attr(data-n)}
tr{height:var(--h)}
tr.gap td{background:#f4f4f4}
.large,.large thead,.large tbody{display:block}
.large thead{position:sticky;top:var(--tabs);z-index:3}
.large tbody{content-visibility:auto;overflow-clip-margin:3px;contain-intrinsic-height:auto var(--r)}
.large tr{display:grid;grid-template-columns:var(--t);height:auto;min-height:var(--h)}
.large thead tr{min-height:0}
.large thead{margin-bottom:1px}
.large th{align-content:center;margin-right:1px}
:where(.large) td{border-left:0;border-top:0;box-sizing:border-box;align-content:end;min-width:0}
.large td[colspan]{border-right:0}
.large td>div{position:relative;z-index:1}
section:has(:checked) .large tr{grid-template-columns:var(--at)}
section:not(:has(:checked)) .x{display:none}
section:has(:checked) table{width:var(--all);background-image:var(--ga,var(--g))}
section:has(:checked) th.x{background:#806000;color:#fff}
@media(prefers-color-scheme:dark){html{--bar:#303030;--ink:#e0e0e0;--room:#181818}}
@media print{nav{display:none}th{position:static}section{content-visibility:visible}}
)";
}

std::string html(std::string_view utf8) {
  std::string text;
  appendHtml(utf8, text);
  return text;
}

namespace {

// A control of the upper half: "<U+0085>", which is no markup.
void appendNumbered(std::string_view control, std::string& result) {
  const std::string shown = visible(control);
  result += "&lt;";
  result.append(shown, 1, shown.size() - 2);
  result += "&gt;";
}

}  // namespace

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
          appendNumbered(utf8.substr(i++, 2), result);
        else
          result += c;
    }
  }
}

}  // namespace qps
