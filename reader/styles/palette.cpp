// SPDX-License-Identifier: MIT
#include "reader/styles/palette.h"

namespace qps {

namespace {

constexpr std::uint8_t kSecondColour = 0;
constexpr std::uint8_t kFirstColour = 1;
constexpr std::uint8_t kSecondColourToo = 7;

// One channel: `a` of colour 1, `b` of colour 2. The halves and quarters are shifts, the other
// shares hundredths, each cut to a whole number before they are added; no sum exceeds 254.
constexpr std::uint32_t blendChannel(std::uint32_t a, std::uint32_t b, std::uint8_t code) {
  switch (code) {
    case 2:
      return (a >> 1) + (b >> 1);
    case 3:
      return (a >> 2) + b * 75 / 100;
    case 4:
      return a * 35 / 100 + b * 65 / 100;
    case 5:
      return a * 75 / 100 + (b >> 2);
    default:
      return a * 65 / 100 + b * 35 / 100;
  }
}

}  // namespace

std::uint32_t qpsBlendColours(std::uint32_t colour1, std::uint32_t colour2, std::uint8_t code) {
  if (code == kSecondColour || code == kSecondColourToo) return colour2;
  if (code == kFirstColour) return colour1;
  std::uint32_t blended = 0;
  for (unsigned shift = 0; shift < 24; shift += 8) {
    blended |= blendChannel(colour1 >> shift & 0xFF, colour2 >> shift & 0xFF, code) << shift;
  }
  return blended;
}

}  // namespace qps
