// SPDX-License-Identifier: MIT
//
// The commands, one row each: what it is called, what it needs of a notebook, and the writer that
// prints it.
#ifndef QPSREADER_TOOL_COMMANDS_H
#define QPSREADER_TOOL_COMMANDS_H

#include <cstdint>
#include <filesystem>
#include <span>
#include <string>

#include "tool/settings.h"

namespace qps {

class Output;
struct Document;
struct SheetData;

// A bit for each command, so that an option can name those that have it.
enum class CommandId : std::uint8_t { kSheets, kInfo, kText, kCsv, kJson, kHtml, kXlsx, kItems };

constexpr unsigned bitOf(CommandId id) {
  return 1U << static_cast<unsigned>(id);
}

// How much of the notebook a command needs in memory.
enum class Need : std::uint8_t {
  kCounts,  // no cell; only how many there are, and which styles they have
  kTexts,   // the cells that show something, in rows
  kAll,     // every cell with its style, in rows
  kItems,   // every cell with its style, in the file's order
};

// Prints these worksheets of the document: all of them, or one where each has a file of its own.
// What it is given is whole: nothing can fail any more but the output.
using Writer = void(Output& out, const Document& document, std::span<const SheetData> sheets,
                    const Settings& settings);

// Writes the whole document to a file that is there already, by its name, and at most so many bytes
// on the way (0 is no limit). Returns what there is to warn of, or "". May throw Failure and
// WriteError.
using FileWriter = std::string(const std::filesystem::path& file, const Document& document,
                               std::uint64_t mostBytes);

struct Command {
  CommandId id;
  const char* name;
  const char* summary;
  Need need;
  bool contents;          // whether it also needs what the cells hold
  const char* extension;  // of the files in --output-dir, with the dot
  bool filePerSheet;      // there; otherwise one per notebook
  Writer* write;
  FileWriter* writeFile = nullptr;  // instead of `write`, for what cannot go to standard output
  void (*prepare)() = nullptr;      // loads what the writer needs; may throw Failure
};

std::span<const Command> commands();

// Each in a file of its own.
Writer writeSheets, writeInfo, writeText, writeCsv, writeJson, writeHtml, writeItems;

FileWriter writeXlsx;
void prepareXlsx();

}  // namespace qps

#endif  // QPSREADER_TOOL_COMMANDS_H
