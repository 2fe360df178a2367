// SPDX-License-Identifier: MIT
//
// What a notebook is: a line for each fact, "name: value".
#include <cstdio>
#include <set>
#include <string>

#include "tool/commands.h"
#include "tool/document.h"
#include "tool/output.h"
#include "tool/text_forms.h"

namespace qps {
namespace {

std::string versionName(std::uint16_t version) {
  char text[32];
  std::snprintf(text, sizeof text, "%u (0x%04X)", unsigned{version}, unsigned{version});
  const char* const writers = version == 0x1001   ? ", of versions 1 and 5 for Windows"
                              : version == 0x1002 ? ", of version 6 for Windows"
                                                  : "";
  return std::string(text) + writers;
}

// The format's identifiers in the registry PRONOM.
const char* pronomName(const NotebookFacts& facts) {
  if (facts.kind == FileKind::kCompoundNotebook) return "fmt/836";
  if (facts.formatVersion == 0x1001) return "fmt/834";
  if (facts.formatVersion == 0x1002) return "fmt/835";
  return "none";
}

std::string containerName(const NotebookFacts& facts) {
  if (facts.kind != FileKind::kCompoundNotebook) return "none, records from the first byte";
  return std::string("compound document, stream ") + facts.containerStream;
}

std::string fontName(const Font& font, const Decoder& decoder) {
  std::string name = decoder.decode(font.name) + " " + std::to_string(font.size);
  if (font.bold) name += " bold";
  if (font.italic) name += " italic";
  if (font.underline) name += " underlined";
  if (font.strikeOut) name += " struck out";
  return name;
}

// By name, so that the order says nothing about which cell came first.
std::string fontsInUse(const Document& document) {
  std::set<std::string> fonts;
  for (std::uint32_t number = 0; number < document.styles.size(); ++number)
    if (const auto font = document.styles.style(number).font)
      fonts.insert(fontName(*font, *document.decoder));
  std::string list;
  for (const std::string& font : fonts)
    list += (list.empty() ? "" : ", ") + visible(font);
  return list.empty() ? "none" : list;
}

std::string sheetNames(std::span<const SheetData> sheets) {
  std::string list;
  for (const SheetData& sheet : sheets)
    list += (list.empty() ? "" : ", ") + visible(sheet.name);
  return list;
}

}  // namespace

void writeInfo(Output& out, const Document& document, std::span<const SheetData> sheets,
               const Settings& settings) {
  const NotebookFacts& facts = document.notebook.facts();
  const auto line = [&out](const char* name, const std::string& value) {
    out.write(std::string(name) + ": " + value + "\n");
  };
  if (document.follows) out.put('\n');
  line("file", visible(document.name));
  line("kind", fileKindName(facts.kind));
  line("MIME type", fileKindMimeType(facts.kind));
  line("PRONOM", pronomName(facts));
  line("format version", versionName(facts.formatVersion));
  line("container", containerName(facts));
  line("encoding", document.decoder->name() +
                       (settings.encodingChosen ? " (chosen with --encoding)"
                                                : " (the default: notebooks do not name theirs)"));
  line("worksheets",
       std::to_string(document.notebook.sheets().size()) + " (" + sheetNames(sheets) + ")");
  line("fonts", std::to_string(facts.fontCount));
  line("fonts in use", fontsInUse(document));
  line("styles", std::to_string(facts.styleCount));
  line("styles in use", std::to_string(document.styles.size()));
  line("named styles", std::to_string(facts.namedStyleCount));
  line("user-defined formats", std::to_string(facts.userFormatCount));
  for (const NotebookText& text : document.notebookTexts)
    line(text.record == 37 ? "notebook text 37" : "notebook text 38", visible(text.text));
}

}  // namespace qps
