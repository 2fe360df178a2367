// SPDX-License-Identifier: MIT
//
// The parts of the HTML page that say how things look, and texts made safe for it.
#ifndef QPSREADER_TOOL_HTML_STYLE_H
#define QPSREADER_TOOL_HTML_STYLE_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include <qpsreader/host/item.hpp>
#include "tool/cell_value.h"
#include "tool/encoding.h"

namespace qps {

// A length in twentieths of a point: "48.2pt".
std::string points(std::uint64_t twentieths);

// Whether such a value must be seen whole or not at all; a text may be cut.
bool isNumber(ValueType type);

// The declarations of a cell's style: "text-align:right;...".
std::string cssOf(const CellStyle& style, const Decoder& decoder);

// A number that may be too wide has the classes n and n1 to n5, by the marks that stand for it.
constexpr std::size_t kMostMarks = 5;

// The style sheet that every page begins with.
std::string_view pageStyles();

// Appends UTF-8 text as the text of an element or the value of a quoted attribute. Line ends become
// newlines; controls, which a page may not hold, show as pictures of themselves.
void appendHtml(std::string_view utf8, std::string& result);
std::string html(std::string_view utf8);

}  // namespace qps

#endif  // QPSREADER_TOOL_HTML_STYLE_H
