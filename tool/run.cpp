// SPDX-License-Identifier: MIT
#include "tool/run.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <initializer_list>
#include <new>
#include <optional>
#include <string>
#include <system_error>
#include <unordered_set>
#include <utility>
#include <vector>

#include <qpsreader/ole_interface.h>
#include "host/library_loader.hpp"
#include "tool/command_line.h"
#include "tool/document.h"
#include "tool/encoding.h"
#include "tool/file_names.h"
#include "tool/inputs.h"
#include "tool/limits.h"
#include "tool/manifest.h"
#include "tool/output.h"
#include "tool/output_bound.h"
#include "tool/output_names.h"
#include "tool/progress.h"
#include "tool/sandbox.h"
#include "tool/text_forms.h"
#include "tool/time_limit.h"

namespace qps {
namespace {

// One line on standard error: "qps: " and the parts, made safe for a terminal. Where there is no
// memory for the line it says that.
void printError(std::initializer_list<std::string_view> parts) {
  try {
    std::string line = "qps: ";
    for (const std::string_view part : parts)
      appendVisible(part, line);
    std::fputs((line + "\n").c_str(), stderr);
  } catch (const std::bad_alloc&) {
    std::fputs("qps: the machine has not enough memory\n", stderr);
  }
}

// No file after this one can be written either.
struct Stop : Failure {};

bool stopsAll(int error) {
#if defined(EDQUOT)
  if (error == EDQUOT) return true;
#endif
  return error == ENOSPC || error == EROFS;
}

class FileLoop {
 public:
  FileLoop(const Command& command, const Settings& settings)
      : command_(command),
        settings_(settings),
        decoder_(settings.encoding),
        progress_(!settings.quiet) {}

  Status run();

 private:
  void openOutputFolder();
  void handle(const std::string& file);
  void process(const std::string& file, InputBytes& bytes, std::size_t& size);
  void record(std::span<const std::byte> bytes);
  void removeLeftoversOnce();
  bool skips(std::vector<std::string> outputs);
  std::vector<std::string> sheetOutputs() const;
  std::string summary() const;
  void rehearse(const Document& document);
  void nameSheets(const Notebook& notebook);
  void writeAll(const Document& document);
  void writeFile(const Document& document, std::span<const SheetData> sheets,
                 const std::string& name);
  std::string outputName(std::string_view sheet) const;
  void warn(const Document& document, std::uint64_t undefinedBytes);
  void say(const std::string& file, std::string_view text);
  void fail(const std::string& file, Status status, std::string_view reason);

  const Command& command_;
  const Settings& settings_;
  Decoder decoder_;
  Progress progress_;
  std::optional<OutputNames> names_;     // with --output-dir
  std::string outputPath_;               // of the notebook at hand, as names_ has it
  std::vector<std::string> sheetNames_;  // of its worksheets, where each has a file
  Output standardOutput_{stdout};
  std::unordered_set<std::string> tidied_;  // folders of output
  std::optional<Manifest> manifest_;
  ManifestEntry entry_;  // of the notebook at hand
  std::uint64_t done_ = 0, skipped_ = 0, failed_ = 0;
  bool stopped_ = false;
  bool anyPrinted_ = false;
  std::uint64_t mostOutput_ = 0;  // of this file; 0 is no limit
  std::string lost_;              // what its writer had to say
  Status first_ = Status::kOk;    // the first failure
};

Status FileLoop::run() {
  Inputs inputs(settings_);
  cleanUpOnSignals();
  if (!settings_.outputDir.empty()) openOutputFolder();
  if (command_.prepare != nullptr) command_.prepare();
  if (!settings_.manifest.empty()) manifest_.emplace(settings_, command_.name);
  if (progress_.wanted()) progress_.expect(inputs.total());
  if (settings_.sandbox) {
    loadLibraryByName(OLE_LIBRARY_NAME);
    enterSandbox(settings_.outputDir);
  }
  try {
    for (std::optional<std::string> file; !stopped_ && (file = inputs.next());) {
      handle(*file);
      progress_.fileDone();
    }
  } catch (const Failure& failure) {
    stopped_ = true;
    fail("--files0-from: " + inputs.list(), failure.status, failure.reason);
  }
  if (settings_.manyFiles()) progress_.finish(summary());
  return stopped_ ? Status::kFailed : first_;
}

std::string FileLoop::summary() const {
  return "qps: " + std::to_string(done_) + " done, " + std::to_string(skipped_) + " skipped, " +
         std::to_string(failed_) + " failed" + (stopped_ ? ", stopped" : "");
}

void FileLoop::openOutputFolder() {
  const auto check = [this](const std::error_code& error) {
    if (error) throw UsageError{"--output-dir: " + settings_.outputDir + ": " + error.message()};
  };
  std::error_code error;
  const std::filesystem::path folder = filePathOf(settings_.outputDir);
  std::filesystem::create_directories(folder, error);
  check(error);
  removeLeftovers(folder);
  try {
    names_.emplace(settings_.base, ignoresCase(folder));
  } catch (const WriteError& failure) {
    check({failure.error, std::generic_category()});
  }
}

void FileLoop::handle(const std::string& file) {
  if (manifest_ && manifest_->has(file)) {
    ++skipped_;
    return;
  }
  entry_ = {};
  entry_.source = file;
  InputBytes bytes;
  std::size_t size = 0;
  try {
    process(file, bytes, size);
  } catch (const Stop& stop) {
    stopped_ = true;
    fail(file, stop.status, stop.reason);
  } catch (const Failure& failure) {
    fail(file, failure.status, failure.reason);
  } catch (const std::bad_alloc&) {
    fail(file, Status::kLimit, "the machine has not enough memory for it");
  }
  ++(entry_.skipped ? skipped_ : entry_.status == Status::kOk ? done_ : failed_);
  if (manifest_) record({bytes.get(), size});
}

void FileLoop::record(std::span<const std::byte> bytes) {
  try {
    manifest_->add(entry_, bytes);
  } catch (const WriteError& error) {
    stopped_ = true;
    fail("--manifest: " + settings_.manifest, Status::kFailed, error.message());
  }
}

void FileLoop::process(const std::string& file, InputBytes& bytes, std::size_t& size) {
  const TimeLimit time(settings_.maxTime);
  lost_.clear();
  if (names_ && settings_.outputFile.empty()) outputPath_ = names_->pathOf(file);
  if (names_) removeLeftoversOnce();
  if (!command_.filePerSheet && skips({outputName("")})) return;
  OpenedFile opened = openInput(file, settings_);
  entry_.facts = opened.notebook.facts();
  nameSheets(opened.notebook);
  if (command_.filePerSheet && settings_.sheets.empty() && skips(sheetOutputs())) return;
  const std::uint64_t undefinedBefore = decoder_.undefinedBytes();
  bytes = std::move(opened.bytes);  // which outlive the document
  size = static_cast<std::size_t>(opened.size);
  Document document = readDocument(file, opened, command_, settings_, decoder_, time, progress_);
  document.follows = settings_.outputDir.empty() && anyPrinted_;
  const std::uint64_t undefinedWhileReading = decoder_.undefinedBytes() - undefinedBefore;
  mostOutput_ = settings_.maxOutput.value_or(defaultMaxOutput(opened.size));
  rehearse(document);
  const std::uint64_t undefinedInRehearsal = decoder_.undefinedBytes();
  anyPrinted_ = true;
  writeAll(document);
  entry_.worksheets = document.sheets.size();
  for (const SheetData& sheet : document.sheets)
    entry_.cells += sheet.shownCells;
  warn(document, undefinedWhileReading + decoder_.undefinedBytes() - undefinedInRehearsal);
  if (document.damage) throw *document.damage;
}

// Where there might be too much output, it is written to nowhere first: nothing of a notebook that
// is given up shall be taken for the whole.
void FileLoop::rehearse(const Document& document) {
  if (command_.write == nullptr) return;  // it writes a file, which can be taken back
  if (mostOutput_ == 0 || outputBound(document, command_.need, settings_) <= mostOutput_) return;
  Output nowhere(standardOutput_, mostOutput_);
  command_.write(nowhere, document, document.sheets, settings_);
  nowhere.flush();
}

void FileLoop::writeAll(const Document& document) {
  if (settings_.outputDir.empty()) {
    progress_.clear();  // the terminal may be the output too
    command_.write(standardOutput_, document, document.sheets, settings_);
    standardOutput_.flush();
    return;
  }
  if (!command_.filePerSheet) return writeFile(document, document.sheets, outputName(""));
  for (const SheetData& sheet : document.sheets)
    writeFile(document, {&sheet, 1}, outputName(sheetNames_[sheet.number - 1]));
}

// Those of processes that were killed, in the folder where the next output goes.
void FileLoop::removeLeftoversOnce() {
  const auto folder = (filePathOf(settings_.outputDir) / filePathOf(outputPath_)).parent_path();
  if (tidied_.insert(fileNameOf(folder)).second) removeLeftovers(folder);
}

// Without a manifest, a notebook is known to be done by its outputs: each appears when it is whole.
// With one, its line is missing, and it is done again.
bool FileLoop::skips(std::vector<std::string> outputs) {
  if (!settings_.skipExisting || manifest_ || outputs.empty()) return false;
  const auto exists = [this](const std::string& output) {
    std::error_code ignored;
    return std::filesystem::exists(filePathOf(settings_.outputDir) / filePathOf(output), ignored);
  };
  entry_.skipped = std::all_of(outputs.begin(), outputs.end(), exists);
  return entry_.skipped;
}

std::vector<std::string> FileLoop::sheetOutputs() const {
  std::vector<std::string> outputs;
  for (const std::string& sheet : sheetNames_)
    outputs.push_back(outputName(sheet));
  return outputs;
}

// All of them have names, so that those of some do not depend on which were asked for.
void FileLoop::nameSheets(const Notebook& notebook) {
  sheetNames_.clear();
  if (!names_ || !command_.filePerSheet) return;
  std::vector<std::string> names;
  for (const Sheet& sheet : notebook.sheets())
    names.push_back(decoder_.decode(sheet.name));
  sheetNames_ = sheetFileNames(names);
}

std::string FileLoop::outputName(std::string_view sheet) const {
  if (!settings_.outputFile.empty()) return settings_.outputFile;
  std::string name = outputPath_;
  if (!sheet.empty()) name.append(".").append(sheet);
  return name + command_.extension;
}

void FileLoop::writeFile(const Document& document, std::span<const SheetData> sheets,
                         const std::string& name) {
  try {
    OutputFile file(filePathOf(settings_.outputDir), name);
    if (command_.writeFile == nullptr)
      command_.write(file.out(), document, sheets, settings_);
    else
      lost_ = command_.writeFile(file.temporary(), document, mostOutput_);
    if (settings_.strict && !lost_.empty()) throw Failure{Status::kFailed, lost_};
    if (!file.finish(settings_.overwrite || !settings_.outputFile.empty()))
      throw Failure{Status::kFailed,
                    name + " is there and is not the same; --overwrite replaces it"};
    entry_.outputs.push_back(name);
  } catch (const WriteError& error) {
    Failure failure{Status::kFailed, "cannot write " + name + ": " + error.message()};
    if (stopsAll(error.error)) throw Stop{std::move(failure)};
    throw failure;
  }
}

void FileLoop::warn(const Document& document, std::uint64_t undefinedBytes) {
  const auto warnOf = [&](const std::string& message, const char* consequence) {
    if (message.empty()) return;
    entry_.warnings.push_back(message + consequence);
    if (!settings_.quiet) say(document.name, "warning: " + entry_.warnings.back());
  };
  warnOf(suspicionMessage(document), "; --salvage leaves it out and goes on behind it");
  warnOf(undefinedBytesMessage(document, undefinedBytes), "; such bytes show as U+FFFD");
  for (const SheetData& sheet : document.sheets)
    warnOf(repeatedCellsMessage(sheet), "; the last of each is shown");
  warnOf(lost_, "");
}

void FileLoop::say(const std::string& file, std::string_view text) {
  progress_.clear();
  printError({file, ": ", text});
}

void FileLoop::fail(const std::string& file, Status status, std::string_view reason) {
  if (first_ == Status::kOk) first_ = status;
  if (entry_.status == Status::kOk) {
    entry_.status = status;
    entry_.message = reason;
  }
  say(file, reason);
}

}  // namespace

Status runTool(int argc, const char* const* argv) {
  try {
    const Invocation invocation = parseCommandLine(argc, argv);
    if (invocation.command != nullptr)
      return FileLoop(*invocation.command, invocation.settings).run();
    Output out(stdout);
    out.write(invocation.text);
    out.flush();
    return Status::kOk;
  } catch (const UsageError& error) {
    printError({error.reason});
    return Status::kUsage;
  } catch (const WriteError& error) {
    // A reader that has closed its pipe has what it wanted, and needs no message.
    if (error.error != EPIPE) printError({"standard output: ", std::strerror(error.error)});
    return Status::kFailed;
  } catch (const std::bad_alloc&) {
    printError({"the machine has not enough memory"});
    return Status::kLimit;
  }
}

}  // namespace qps
