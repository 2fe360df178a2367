// SPDX-License-Identifier: MIT
#include "fuzz/output_checks.h"

#include <rapidjson/document.h>
#include <rapidjson/error/en.h>

#include <algorithm>
#include <string>
#include <vector>

#include "tests/support/recording_host.h"
#include "tool/text_forms.h"

namespace qps::fuzz {

using test::require;

namespace {

constexpr auto kNone = std::string_view::npos;

// Takes a character off the front; in its shortest form, no half of a pair, none beyond the last.
char32_t takeCharacter(std::string_view& utf8) {
  const auto byteAt = [&](std::size_t i) { return static_cast<unsigned char>(utf8[i]); };
  const unsigned char lead = byteAt(0);
  if (lead < 0x80) {
    utf8.remove_prefix(1);
    return lead;
  }
  const std::size_t size = lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
  require(lead >= 0xC2 && lead <= 0xF4 && utf8.size() >= size, "valid UTF-8: the first byte");
  char32_t character = lead & (0x7FU >> size);
  for (std::size_t i = 1; i < size; ++i) {
    require((byteAt(i) & 0xC0) == 0x80, "valid UTF-8: a byte that goes on");
    character = character << 6 | (byteAt(i) & 0x3FU);
  }
  require(character >= (size == 2   ? 0x80U
                        : size == 3 ? 0x800U
                                    : 0x10000U),
          "valid UTF-8: shortest");
  require(character <= 0x10FFFF && (character < 0xD800 || character > 0xDFFF), "a character");
  utf8.remove_prefix(size);
  return character;
}

bool startsWithAny(std::string_view text, std::initializer_list<std::string_view> beginnings) {
  return std::any_of(beginnings.begin(), beginnings.end(),
                     [&](std::string_view beginning) { return text.starts_with(beginning); });
}

// Takes one field and what ends it off the front of `csv`; the end is the delimiter or '\n'.
std::string takeField(std::string_view& csv, char delimiter, std::string_view lineEnd, char& end) {
  std::string field;
  if (csv.starts_with('"')) {
    for (csv.remove_prefix(1);; csv.remove_prefix(1)) {
      require(!csv.empty(), "a quoted field ends");
      if (csv.starts_with("\"\""))
        csv.remove_prefix(1);
      else if (csv.starts_with('"'))
        break;
      field += csv.front();
    }
    csv.remove_prefix(1);
  } else {
    for (; !csv.empty() && csv.front() != delimiter && !csv.starts_with(lineEnd);
         csv.remove_prefix(1)) {
      require(!startsWithAny(csv, {"\"", "\r", "\n"}), "such a field is quoted");
      field += csv.front();
    }
  }
  require(!csv.empty(), "the last line ends");
  end = csv.front() == delimiter ? delimiter : '\n';
  require(end == delimiter || csv.starts_with(lineEnd), "a field ends at a delimiter or a line");
  csv.remove_prefix(end == delimiter ? 1 : lineEnd.size());
  return field;
}

// Takes a tag off the front of `html` and returns its name: "td", "/td".
std::string_view takeTag(std::string_view& html) {
  constexpr std::string_view kAttributes[] = {
      "aria-label", "aria-labelledby", "charset", "class", "colspan", "content", "data-n",
      "href",       "http-equiv",      "id",      "lang",  "name",    "role",    "scope",
      "style",      "title",           "type"};
  html.remove_prefix(1);
  const std::string_view name = html.substr(0, html.find_first_of(" >"));
  html.remove_prefix(name.size());
  while (html.starts_with(' ')) {
    const std::string_view attribute = html.substr(1, html.find("=\"") - 1);
    require(std::find(std::begin(kAttributes), std::end(kAttributes), attribute) !=
                std::end(kAttributes),
            "an attribute of the writer's");
    html.remove_prefix(attribute.size() + 3);
    const std::string_view value = html.substr(0, html.find('"'));
    require(value.find_first_of("<>") == kNone, "a value without markup");
    require(attribute != "href" || value.starts_with("#sheet"), "links stay on the page");
    html.remove_prefix(value.size() + 1);
  }
  require(html.starts_with('>'), "a tag ends");
  html.remove_prefix(1);
  return name;
}

void checkText(std::string_view text) {
  require(text.find('>') == kNone, "a text without markup");
  for (std::size_t at = 0; (at = text.find('&', at)) != kNone; ++at)
    require(startsWithAny(text.substr(at), {"&amp;", "&lt;", "&gt;", "&quot;"}), "an entity");
}

// Braces balance, strings end, and nothing outside of them is fetched.
void checkStyleSheet(std::string_view css) {
  int depth = 0;
  bool quoted = false;
  for (std::size_t i = 0; i < css.size(); ++i) {
    if (quoted) {
      require(css[i] != '\n', "a string ends on its line");
      if (css[i] == '\\')
        ++i;
      else
        quoted = css[i] != '"';
      continue;
    }
    quoted = css[i] == '"';
    depth += css[i] == '{' ? 1 : css[i] == '}' ? -1 : 0;
    require(depth >= 0, "braces balance");
    require(css[i] != '@' || css.substr(i).starts_with("@media"), "nothing is imported");
    require(css[i] != '(' || !css.substr(0, i).ends_with("url"), "nothing is loaded");
    require(css[i] != '*' || css[i - 1] != '/', "no comment");
  }
  require(depth == 0 && !quoted, "the style sheet is whole");
}

}  // namespace

void checkUtf8(std::string_view output) {
  while (!output.empty())
    takeCharacter(output);
}

void checkCharacters(std::string_view output, bool oneWay) {
  while (!output.empty()) {
    const char32_t c = takeCharacter(output);
    require(c >= 0x20 || c == '\n' || c == '\t' || c == '\r', "no control");
    require(c < 0x7F || c > 0x9F, "no DEL, no control of the upper half");
    const bool turns = (c >= 0x202A && c <= 0x202E) || (c >= 0x2066 && c <= 0x2069);
    require(!oneWay || !turns, "the direction of writing stays");
  }
}

void checkCsv(std::string_view output, const Document& document, const SheetData& sheet,
              const Settings& settings, bool onTerminal) {
  checkUtf8(output);
  if (onTerminal) checkCharacters(output, true);
  if (settings.bom) {
    require(output.starts_with("\uFEFF"), "the mark of UTF-8");
    output.remove_prefix(3);
  }
  const auto& cells = sheet.cells;
  auto cell = cells.begin();
  for (std::uint32_t row = 1; cell != cells.end(); ++row) {
    if (settings.skipEmpty) row = cell->place.row();
    for (std::uint32_t column = 1; column <= sheet.shown.lastColumn; ++column) {
      char end;
      const std::string field =
          takeField(output, settings.delimiter, settings.crlf ? "\r\n" : "\n", end);
      require((end == '\n') == (column == sheet.shown.lastColumn), "rows are of one length");
      std::string expected;
      if (cell != cells.end() && cell->place.row() == row && cell->place.column() == column)
        expected = document.decoder->decode((cell++)->text);
      if (settings.csvSafe)
        require(!startsWithAny(field, {"=", "@", "\uFF1D", "\uFF0B", "\uFF0D", "\uFF20"}),
                "no field begins a formula");
      else if (!onTerminal)
        require(field == (settings.trim ? trimmed(expected) : expected), "the cell's text");
    }
  }
  require(output.empty(), "nothing behind the last row");
}

void checkJsonLines(std::string_view output, const Document& document) {
  checkCharacters(output, false);
  std::size_t lines = 0;
  std::vector<const Cell*> cells;
  for (const SheetData& sheet : document.sheets) {
    lines += 1 + sheet.columnWidths.size() + sheet.rowHeights.size() +
             document.notebookTexts.size() + sheet.cells.size();
    for (const Cell& cell : sheet.cells)
      cells.push_back(&cell);
  }
  // Kept for all lines: a document's own block is as long as many of them.
  static char block[std::size_t{16} << 10];
  rapidjson::MemoryPoolAllocator<> values(block, sizeof block);
  rapidjson::Document line(&values);
  auto cell = cells.begin();
  for (; !output.empty(); --lines) {
    const std::size_t end = output.find('\n');
    require(lines > 0 && end != kNone, "a line an item");
    line.SetNull();
    values.Clear();
    line.Parse<rapidjson::kParseValidateEncodingFlag>(output.data(), end);
    require(!line.HasParseError() && line.IsObject() && line.HasMember("kind"), "a JSON object");
    output.remove_prefix(end + 1);
    if (line["kind"] != "cell") continue;
    const auto& text = line["text"];
    require(text.IsNull() ? (*cell)->text == nullptr
                          : std::string_view(text.GetString(), text.GetStringLength()) ==
                                document.decoder->decode((*cell)->text),
            "the cell's text");
    ++cell;
  }
  require(lines == 0 && cell == cells.end(), "every item has its line");
}

void checkPage(std::string_view html) {
  constexpr std::string_view kElements[] = {
      "html",     "head",   "title", "style", "body", "header", "h1",      "h2",
      "p",        "strong", "nav",   "a",     "main", "label",  "section", "table",
      "colgroup", "thead",  "tbody", "tr",    "th",   "td",     "div",     "span"};
  constexpr std::string_view kVoid[] = {"meta", "col", "input"};
  constexpr std::string_view kDoctype = "<!DOCTYPE html>";
  checkCharacters(html, false);
  require(html.starts_with(kDoctype), "a page");
  html.remove_prefix(kDoctype.size());
  std::vector<std::string_view> open;
  while (!html.empty()) {
    const std::string_view text = html.substr(0, html.find('<'));
    if (!open.empty() && open.back() == "style")
      checkStyleSheet(text);
    else
      checkText(text);
    html.remove_prefix(text.size());
    if (html.empty()) break;
    const std::string_view name = takeTag(html);
    if (name.starts_with('/')) {
      require(!open.empty() && open.back() == name.substr(1), "elements nest");
      open.pop_back();
    } else if (std::find(std::begin(kVoid), std::end(kVoid), name) == std::end(kVoid)) {
      require(std::find(std::begin(kElements), std::end(kElements), name) != std::end(kElements),
              "an element of the writer's");
      open.push_back(name);
    }
  }
  require(open.empty(), "every element ends");
}

}  // namespace qps::fuzz
