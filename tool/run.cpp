// SPDX-License-Identifier: MIT
#include "tool/run.h"

#include <cstdio>
#include <filesystem>
#include <new>
#include <optional>
#include <string>
#include <system_error>
#include <utility>

#include "tool/document.h"
#include "tool/encoding.h"
#include "tool/inputs.h"
#include "tool/output.h"
#include "tool/output_names.h"
#include "tool/progress.h"
#include "tool/text_forms.h"

namespace qps {
namespace {

class FileLoop {
 public:
  FileLoop(const Command& command, const Settings& settings)
      : command_(command),
        settings_(settings),
        decoder_(settings.encoding),
        progress_(!settings.quiet) {}

  Status run();

 private:
  void handle(const std::string& file);
  void process(const std::string& file);
  void writeAll(const Document& document);
  void writeFile(const Document& document, std::span<const SheetData> sheets,
                 std::string_view sheetName);
  void warn(const Document& document, std::uint64_t undefinedBefore);
  void say(const std::string& file, const std::string& text);
  void fail(const std::string& file, const Failure& failure);

  const Command& command_;
  const Settings& settings_;
  Decoder decoder_;
  Progress progress_;
  OutputNames names_;
  Output standardOutput_{stdout};
  bool anyPrinted_ = false;
  Status first_ = Status::kOk;  // the first failure
};

Status FileLoop::run() {
  Inputs inputs(settings_);
  if (!settings_.outputDir.empty()) {
    std::error_code error;
    std::filesystem::create_directories(settings_.outputDir, error);
    if (error) throw UsageError{"--output-dir: " + settings_.outputDir + ": " + error.message()};
  }
  while (const auto file = inputs.next()) {
    handle(*file);
    progress_.fileDone();
  }
  return first_;
}

void FileLoop::handle(const std::string& file) {
  try {
    process(file);
  } catch (const Failure& failure) {
    fail(file, failure);
  } catch (const std::bad_alloc&) {
    fail(file, {Status::kLimit, "the machine has not enough memory for it"});
  }
}

void FileLoop::process(const std::string& file) {
  const std::uint64_t undefinedBefore = decoder_.undefinedBytes();
  OpenedFile opened = openInput(file, settings_);
  Document document =
      readDocument(file, std::move(opened.notebook), command_, settings_, decoder_, progress_);
  document.follows = settings_.outputDir.empty() && std::exchange(anyPrinted_, true);
  writeAll(document);
  warn(document, undefinedBefore);
  if (document.damage) throw *document.damage;
}

void FileLoop::writeAll(const Document& document) {
  if (settings_.outputDir.empty()) {
    progress_.clear();  // the terminal may be the output too
    command_.write(standardOutput_, document, document.sheets, settings_);
    standardOutput_.flush();
    return;
  }
  if (!command_.filePerSheet) return writeFile(document, document.sheets, "");
  for (const SheetData& sheet : document.sheets)
    writeFile(document, {&sheet, 1},
              sheet.name.empty() ? "sheet " + std::to_string(sheet.number) : sheet.name);
}

void FileLoop::writeFile(const Document& document, std::span<const SheetData> sheets,
                         std::string_view sheetName) {
  const std::string name = names_.make(document.name, sheetName, command_.extension);
  try {
    OutputFile file(settings_.outputDir, name);
    command_.write(file.out(), document, sheets, settings_);
    file.finish();
  } catch (const WriteError& error) {
    throw Failure{Status::kFailed, "cannot write " + name + ": " + error.message()};
  }
}

void FileLoop::warn(const Document& document, std::uint64_t undefinedBefore) {
  if (settings_.quiet) return;
  const auto warnOf = [&](const std::string& message, const char* consequence) {
    if (!message.empty()) say(document.name, "warning: " + message + "; " + consequence);
  };
  warnOf(undefinedBytesMessage(document, decoder_.undefinedBytes() - undefinedBefore),
         "such bytes show as U+FFFD");
  for (const SheetData& sheet : document.sheets)
    warnOf(repeatedCellsMessage(sheet), "the last of each is shown");
}

void FileLoop::say(const std::string& file, const std::string& text) {
  progress_.clear();
  printError(file + ": " + text);
}

void FileLoop::fail(const std::string& file, const Failure& failure) {
  if (first_ == Status::kOk) first_ = failure.status;
  say(file, failure.reason);
}

}  // namespace

Status runCommand(const Command& command, const Settings& settings) {
  return FileLoop(command, settings).run();
}

void printError(std::string_view text) {
  std::fputs(("qps: " + visible(text) + "\n").c_str(), stderr);
}

}  // namespace qps
