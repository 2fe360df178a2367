// SPDX-License-Identifier: MIT
#include "tool/option_values.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <string_view>

#include "tool/status.h"

namespace qps {
namespace {

// The power of 2 that a letter stands for; 0 for other letters.
unsigned shiftOf(char unit) {
  const std::string_view units = "KkMmGgTt";
  const std::size_t place = units.find(unit);
  return place == units.npos ? 0 : 10 * (static_cast<unsigned>(place) / 2 + 1);
}

}  // namespace

std::uint64_t parseSize(const char* option, const std::string& text) {
  std::uint64_t number = 0;
  const char* const end = text.data() + text.size();
  const auto [suffix, error] = std::from_chars(text.data(), end, number);
  unsigned shift = 0;
  if (error == std::errc() && end - suffix == 1) shift = shiftOf(*suffix);
  const bool known = suffix == end || shift > 0;
  if (error != std::errc() || !known || (number << shift >> shift) != number)
    throw UsageError{std::string(option) + ": '" + text + "' is not a size such as 500M or 2G"};
  return number << shift;
}

void parseShard(const std::string& text, Settings& settings) {
  const auto number = [](const char* begin, const char* end, std::uint64_t& value) {
    const auto [rest, error] = std::from_chars(begin, end, value);
    return error == std::errc() && rest == end;
  };
  const char* const end = text.data() + text.size();
  const char* const slash = std::find(text.data(), end, '/');
  std::uint64_t shard = 0, count = 0;
  if (slash == end || !number(text.data(), slash, shard) || !number(slash + 1, end, count) ||
      shard == 0 || shard > count)
    throw UsageError{"--shard: '" + text + "' is not one of 1/N to N/N"};
  settings.shard = shard - 1;
  settings.shardCount = count;
}

std::chrono::milliseconds parseSeconds(const std::string& text) {
  constexpr double kMostSeconds = 1e9;
  double seconds = 0;
  const char* const end = text.data() + text.size();
  const auto [rest, error] = std::from_chars(text.data(), end, seconds, std::chars_format::fixed);
  if (error != std::errc() || rest != end || !(seconds >= 0 && seconds <= kMostSeconds))
    throw UsageError{"--max-time: '" + text + "' is not a number of seconds"};
  // To the nearest: with more digits than a double's, as on 32-bit x86, 0.1 * 1000 is over 100.
  const auto milliseconds = std::chrono::milliseconds(std::llround(seconds * 1000));
  return seconds > 0 ? std::max(milliseconds, std::chrono::milliseconds(1)) : milliseconds;
}

std::string parseEscapes(const std::string& text) {
  std::string result;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '\\' || i + 1 == text.size()) {
      result += text[i];
      continue;
    }
    switch (text[++i]) {
      case 'n':
        result += '\n';
        break;
      case 'r':
        result += '\r';
        break;
      case 't':
        result += '\t';
        break;
      case 'f':
        result += '\f';
        break;
      default:
        result += text[i];
    }
  }
  return result;
}

char parseDelimiter(const std::string& text) {
  const std::string value = text == "tab" ? "\t" : parseEscapes(text);
  const bool usable = value.size() == 1 && static_cast<unsigned char>(value[0]) < 0x80 &&
                      std::string_view("\"\r\n").find(value[0]) == std::string_view::npos;
  if (!usable)
    throw UsageError{"--delimiter: '" + text + "' is not one ASCII character, or is a quote"};
  return value[0];
}

Hidden parseHidden(const std::string& text) {
  if (text == "keep") return Hidden::kKeep;
  if (text == "skip") return Hidden::kSkip;
  if (text == "mark") return Hidden::kMark;
  throw UsageError{"--hidden: '" + text + "' is none of keep, skip and mark"};
}

}  // namespace qps
