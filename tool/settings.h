// SPDX-License-Identifier: MIT
//
// The values of all options, as command_line.cpp fills them in and everything else reads them.
#ifndef QPSREADER_TOOL_SETTINGS_H
#define QPSREADER_TOOL_SETTINGS_H

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace qps {

// What becomes of hidden rows and columns in rows of text.
enum class Hidden : std::uint8_t {
  kKeep,
  kSkip,
  kMark,  // a column in front and a record above say which are hidden
};

struct Settings {
  // Input.
  std::vector<std::string> files;
  std::string files0From;   // a file of names, each ended by a zero byte; "" is none
  std::uint64_t shard = 0;  // of every shardCount files, the one with this place, from 0
  std::uint64_t shardCount = 1;
  std::vector<std::string> sheets;  // names or numbers; none means all
  std::string encoding = "windows-1252";
  bool encodingChosen = false;

  // Output.
  std::string outputDir;   // "" is standard output
  std::string outputFile;  // xlsx: the name of the only file there; "" for the notebook's own
  std::string base;        // what outputs in outputDir are named below of; "" is nothing
  bool skipExisting = false;
  bool overwrite = false;  // files in outputDir that have other content
  std::string manifest;    // a file; "" is none
  bool quiet = false;
  bool strict = false;
  bool salvage = false;

  // Limits of one notebook; 0 is none.
  std::uint64_t maxMemory = std::uint64_t{1} << 30;             // in bytes
  std::optional<std::uint64_t> maxOutput;                       // in bytes; see defaultMaxOutput
  std::chrono::milliseconds maxTime = std::chrono::minutes(1);  // of the processor

  // Rows: csv and text.
  bool skipEmpty = false;
  bool trim = false;
  bool values = false;  // what cells hold instead of what they show
  Hidden hidden = Hidden::kKeep;

  // json.
  bool noStyle = false;

  // csv.
  bool withSource = false;
  char delimiter = ',';
  bool crlf = false;
  bool bom = false;
  bool csvSafe = false;
  std::optional<std::string> separator;  // between the worksheets of one stream

  bool sandbox = true;

  bool manyFiles() const { return files.size() > 1 || !files0From.empty(); }
};

}  // namespace qps

#endif  // QPSREADER_TOOL_SETTINGS_H
