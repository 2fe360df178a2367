// SPDX-License-Identifier: MIT
//
// The parts of the page that writeHtml makes, for who shows a notebook piece by piece.
#ifndef QPSREADER_TOOL_HTML_WRITER_H
#define QPSREADER_TOOL_HTML_WRITER_H

#include <cstdint>
#include <memory>

namespace qps {

class Output;
struct Document;
struct SheetData;

// The page's style sheet: what stands inside of <style>.
void writeHtmlStyles(Output& out, const Document& document);

// The <section> of one worksheet. What it refers to must outlive it.
class HtmlSheet {
 public:
  static constexpr std::uint32_t kRowsTogether = 50;

  HtmlSheet(Output& out, const Document& document, const SheetData& sheet);
  ~HtmlSheet();

  // Whether its rows have fixed heights, and can be written piece by piece.
  bool isLarge() const;

  void write();

  // Of a large one: the section with one empty <tbody>; and what goes into a <tbody> for these rows
  // (from 1; at most kRowsTogether), whether or not they have cells.
  void writeFrame();
  void writeRows(std::uint32_t first, std::uint32_t last);

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace qps

#endif  // QPSREADER_TOOL_HTML_WRITER_H
