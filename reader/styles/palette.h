// SPDX-License-Identifier: MIT
//
// The sixteen colours that styles choose from, and the blending of two of them into a fill.
#ifndef QPSREADER_STYLES_PALETTE_H
#define QPSREADER_STYLES_PALETTE_H

#include <cstddef>
#include <cstdint>

#include "reader/frame/qps_sheet.h"

namespace qps {

// Colour values: red in bits 0-7, green in 8-15, blue in 16-23.
inline constexpr std::uint32_t QPSPalette[16] = {
    0xFFFFFF, 0xC0C0C0, 0x808080, 0x000000, 0x0000FF, 0x00FF00, 0xFF0000, 0xFFFF00,
    0xFF00FF, 0x00FFFF, 0x800080, 0x008000, 0x008080, 0x800000, 0x000080, 0x808000,
};

constexpr std::uint32_t paletteColour(std::size_t index) {
  return index < std::size(QPSPalette) ? QPSPalette[index] : kNoColour;
}

// The fill of a style: `colour1` and `colour2` in the proportion that `code` (0 to 7) stands for,
// channel by channel.
std::uint32_t qpsBlendColours(std::uint32_t colour1, std::uint32_t colour2, std::uint8_t code);

}  // namespace qps

#endif  // QPSREADER_STYLES_PALETTE_H
