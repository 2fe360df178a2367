// SPDX-License-Identifier: MIT
//
// Small pieces of JSON that all who write it share: members, colours, and the parts of a style.
#ifndef QPSREADER_TOOL_JSON_FORMS_H
#define QPSREADER_TOOL_JSON_FORMS_H

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <cstdint>
#include <optional>
#include <string_view>

#include <qpsreader/host/item.hpp>
#include "tool/encoding.h"

namespace qps {

using Json = rapidjson::Writer<rapidjson::StringBuffer>;

void putText(Json& json, const char* name, std::string_view utf8);
void putNumber(Json& json, const char* name, std::uint32_t value);
void putBool(Json& json, const char* name, bool value);

// "#rrggbb", or null for no colour.
void putColour(Json& json, const char* name, SSColour colour);

// Objects; those of docs/json-schema/qps-items.schema.json.
void putAlignment(Json& json, const CellStyle& style);
void putBorders(Json& json, const CellStyle& style);  // the sides that have a line
void putFont(Json& json, const std::optional<Font>& font, const Decoder& decoder);

}  // namespace qps

#endif  // QPSREADER_TOOL_JSON_FORMS_H
