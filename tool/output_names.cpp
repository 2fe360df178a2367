// SPDX-License-Identifier: MIT
#include "tool/output_names.h"

#include <algorithm>
#include <array>
#include <filesystem>

#include "tool/letter_case.h"
#include "tool/text_forms.h"

namespace qps {
namespace {

constexpr std::size_t kLongestName = 100;

bool isAllowed(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return byte >= 0x20 && byte != 0x7F &&
         std::string_view("/\\:*?\"<>|").find(c) == std::string_view::npos;
}

// Names that Windows keeps for devices, whatever follows their first dot.
bool isDeviceName(std::string_view name) {
  const std::string stem = lowerCase(name.substr(0, name.find('.')));
  constexpr std::array<std::string_view, 4> kDevices = {"con", "prn", "aux", "nul"};
  if (std::find(kDevices.begin(), kDevices.end(), stem) != kDevices.end()) return true;
  const bool numbered = stem.size() == 4 && stem[3] >= '0' && stem[3] <= '9';
  return numbered && (stem.starts_with("com") || stem.starts_with("lpt"));
}

// Cut between two characters.
void cutTo(std::string& utf8, std::size_t size) {
  if (utf8.size() <= size) return;
  while (size > 0 && (static_cast<unsigned char>(utf8[size]) & 0xC0U) == 0x80U)
    --size;
  utf8.resize(size);
}

}  // namespace

std::string safeName(std::string_view utf8) {
  std::string name = visible(utf8);
  std::replace_if(
      name.begin(), name.end(), [](char c) { return !isAllowed(c); }, '_');
  cutTo(name, kLongestName);
  const auto isEdge = [](char c) { return c == '.' || c == ' '; };
  if (!name.empty() && isEdge(name.front())) name.front() = '_';
  if (!name.empty() && isEdge(name.back())) name.back() = '_';
  if (name.empty() || isDeviceName(name)) name.insert(name.begin(), '_');
  return name;
}

std::string OutputNames::make(const std::string& file, std::string_view sheet,
                              std::string_view extension) {
  const std::string base =
      file == "-" ? "stdin" : safeName(std::filesystem::path(file).filename().string());
  const std::string stem = sheet.empty() ? base : base + "." + safeName(sheet);
  const std::string plain = stem + std::string(extension);
  std::string name = plain;
  unsigned& repeats = repeats_[lowerCase(plain)];
  while (!given_.insert(lowerCase(name)).second)
    name = stem + "~" + std::to_string(++repeats + 1) + std::string(extension);
  return name;
}

}  // namespace qps
