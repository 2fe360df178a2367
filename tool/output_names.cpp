// SPDX-License-Identifier: MIT
#include "tool/output_names.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <unordered_set>
#include <utility>

#include "tool/file_names.h"
#include "tool/letter_case.h"
#include "tool/status.h"
#include "tool/text_forms.h"
#include "tool/utf8.h"

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

void appendByte(char byte, std::string& result) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  const auto value = static_cast<unsigned char>(byte);
  result += '%';
  result += kDigits[value >> 4U];
  result += kDigits[value & 0xFU];
}

// One name of a path, so that it can be told what it was: "%3A" stands for what is not allowed.
void appendEscaped(std::string_view name, bool diskIgnoresCase, std::string& result) {
  const std::size_t last = name.find_last_not_of(". ") + 1;  // Windows drops what follows
  bool escapesFirst = isDeviceName(name);
  for (std::size_t i = 0; i < name.size();) {
    const Decoded first = firstCharacter(name.substr(i));
    const std::size_t size = first.size;
    const std::string_view character = name.substr(i, size);
    const bool plain = i < last && !escapesFirst && isAllowed(character[0]) && character != "%" &&
                       visible(character) == character &&
                       (!diskIgnoresCase || hasKnownCase(first.character));
    if (plain)
      result += character;
    else
      for (const char byte : character)
        appendByte(byte, result);
    escapesFirst = false;
    i += size;
  }
}

// Which characters are capitals, a bit for each as hexadecimal digits: "%u1" for "Abc". Nothing
// else has a "%" before a "u".
std::string caseMark(std::string_view path) {
  std::string digits;
  unsigned digit = 0, bits = 0;
  const auto flush = [&] {
    digits += "0123456789abcdef"[digit];
    digit = bits = 0;
  };
  while (!path.empty()) {
    const std::string_view character = path.substr(0, firstCharacter(path).size);
    path.remove_prefix(character.size());
    if (lowerCase(character) != character) digit |= 1U << bits;
    if (++bits == 4) flush();
  }
  flush();
  digits.resize(digits.find_last_not_of('0') + 1);
  return digits.empty() ? "" : "%u" + digits;
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

std::vector<std::string> sheetFileNames(const std::vector<std::string>& sheets) {
  std::vector<std::string> names;
  std::unordered_set<std::string> given;  // in lower case
  for (const std::string& sheet : sheets) {
    std::string safe =
        safeName(sheet.empty() ? "sheet " + std::to_string(names.size() + 1) : sheet);
    std::replace(safe.begin(), safe.end(), '.', '_');
    std::string name = safe;
    for (unsigned repeat = 2; !given.insert(lowerCase(name)).second; ++repeat)
      name = safe + "~" + std::to_string(repeat);
    names.push_back(std::move(name));
  }
  return names;
}

OutputNames::OutputNames(const std::string& base, bool diskIgnoresCase)
    : baseText_(genericFileNameOf(filePathOf(base))), diskIgnoresCase_(diskIgnoresCase) {
  if (!baseText_.empty()) base_ = split(baseText_);
}

OutputNames::Parts OutputNames::split(std::string_view path) {
  Parts parts{path.starts_with('/'), {}};
  while (!path.empty()) {
    const std::string_view name = path.substr(0, path.find('/'));
    path.remove_prefix(std::min(name.size() + 1, path.size()));
    if (!name.empty() && name != ".") parts.names.push_back(name);
  }
  return parts;
}

void OutputNames::cutBase(Parts& parts) const {
  const bool below = parts.absolute == base_->absolute &&
                     parts.names.size() > base_->names.size() &&
                     std::equal(base_->names.begin(), base_->names.end(), parts.names.begin());
  if (!below) throw Failure{Status::kFailed, "not below --base " + baseText_};
  parts.names.erase(parts.names.begin(),
                    parts.names.begin() + static_cast<std::ptrdiff_t>(base_->names.size()));
}

std::string OutputNames::pathOf(const std::string& source) {
  if (source == "-") return "stdin";
  const std::string generic = genericFileNameOf(filePathOf(source));
  Parts parts = split(generic);
  if (base_) {
    cutBase(parts);
  } else if (absolute_.value_or(parts.absolute) != parts.absolute) {
    throw Failure{Status::kFailed,
                  "absolute and relative names could have the same output; see --base"};
  }
  absolute_ = parts.absolute;

  std::string path;
  std::string letters;
  for (const std::string_view name : parts.names) {
    if (name == "..")
      throw Failure{Status::kFailed, "'..' leads out of --output-dir; --base can cut it off"};
    if (!path.empty()) path += '/', letters += '/';
    appendEscaped(name, diskIgnoresCase_, path);
    letters += name;
  }
  if (path == "stdin") return "%73tdin";  // the other one is standard input's
  if (diskIgnoresCase_) path += caseMark(letters);
  return path;
}

}  // namespace qps
