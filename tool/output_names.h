// SPDX-License-Identifier: MIT
//
// Names for the files in --output-dir, made of names that may hold anything: a file's and a
// worksheet's.
#ifndef QPSREADER_TOOL_OUTPUT_NAMES_H
#define QPSREADER_TOOL_OUTPUT_NAMES_H

#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

namespace qps {

// A name without folders, controls and the characters that some system does not allow, which does
// not begin or end with a dot or a blank, and which is at most 100 bytes long. Never empty.
std::string safeName(std::string_view utf8);

class OutputNames {
 public:
  // "FILE.EXTENSION", or "FILE.SHEET.EXTENSION" for a sheet name that is not empty. The same name
  // is given once: the next time it has "~2" in it, also when only the case of letters differs.
  std::string make(const std::string& file, std::string_view sheet, std::string_view extension);

 private:
  // All in lower case.
  std::unordered_set<std::string> given_;
  std::unordered_map<std::string, unsigned> repeats_;  // of a name, so far
};

}  // namespace qps

#endif  // QPSREADER_TOOL_OUTPUT_NAMES_H
