// SPDX-License-Identifier: MIT
//
// The tables of commands and options, and the parser made of them.
#include "tool/command_line.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <sstream>
#include <string_view>
#include <utility>
#include <vector>

#include <qpsreader/version.h>
#include "tool/file_names.h"
#include "tool/option_values.h"
#include "tool/sandbox.h"
#include "tool/status.h"

namespace qps {
namespace {

constexpr Command kCommands[] = {
    {CommandId::kSheets, "sheets", "List the worksheets: names, sizes, used ranges, cells, offsets",
     Need::kCounts, false, ".sheets.tsv", false, writeSheets},
    {CommandId::kInfo, "info", "Describe the notebook: kind, MIME type, version, fonts, styles",
     Need::kCounts, false, ".info.txt", false, writeInfo},
    {CommandId::kText, "text", "Print rows as lines and columns between tabs, for grep and diff",
     Need::kTexts, false, ".txt", false, writeText},
    {CommandId::kCsv, "csv", "Print comma-separated values (RFC 4180, UTF-8)", Need::kTexts, false,
     ".csv", true, writeCsv},
    {CommandId::kJson, "json", "Print JSON Lines: one object for each item, with value and style",
     Need::kItems, true, ".jsonl", false, writeJson},
    {CommandId::kHtml, "html", "Print an HTML page that looks like the notebook", Need::kAll, true,
     ".html", false, writeHtml},
#if defined(QPS_XLSX)
    {CommandId::kXlsx, "xlsx", "Write a spreadsheet workbook (.xlsx): numbers, formats and looks",
     Need::kAll, true, ".xlsx", false, nullptr, writeXlsx, prepareXlsx},
#endif
    {CommandId::kItems, "items", "Print every item with its raw fields, for debugging",
     Need::kItems, false, ".items.txt", false, writeItems},
};

constexpr unsigned kEvery = ~0U;
constexpr unsigned kCsvOnly = bitOf(CommandId::kCsv);
constexpr unsigned kJsonOnly = bitOf(CommandId::kJson);
constexpr unsigned kRows = bitOf(CommandId::kCsv) | bitOf(CommandId::kText);

struct OptionRow {
  const char* name;
  const char* value;  // what stands for its value in the help; null for a switch
  unsigned commands;  // those that have it
  const char* help;
  void (*set)(Settings& settings, const std::string& value);
};

const std::string& notEmpty(const char* option, const std::string& value) {
  if (value.empty()) throw UsageError{std::string(option) + ": the name is empty"};
  return value;
}

constexpr OptionRow kOptions[] = {
    {"-s,--sheet", "NAME|NUMBER", kEvery,
     "Only this worksheet, by its name or its number from 1 (repeatable)",
     [](Settings& s, const std::string& value) { s.sheets.push_back(value); }},
    {"--files0-from", "FILE", kEvery,
     "Read the names of the files from FILE, each ended by a zero byte (- for standard input)",
     [](Settings& s, const std::string& value) {
       s.files0From = notEmpty("--files0-from", value);
     }},
    {"--output-dir", "DIR", kEvery, "Write a file for each notebook (csv: each worksheet) in DIR",
     [](Settings& s, const std::string& value) { s.outputDir = notEmpty("--output-dir", value); }},
    {"--base", "DIR", kEvery, "Cut DIR off the front of the names of the files in --output-dir",
     [](Settings& s, const std::string& value) { s.base = notEmpty("--base", value); }},
    {"--skip-existing", nullptr, kEvery,
     "Leave out notebooks whose files in --output-dir are there (those that have failed run again)",
     [](Settings& s, const std::string&) { s.skipExisting = true; }},
    {"--overwrite", nullptr, kEvery,
     "Replace files in --output-dir that have other content (else the notebook fails)",
     [](Settings& s, const std::string&) { s.overwrite = true; }},
    {"--manifest", "FILE", kEvery,
     "Write a line of JSON for each notebook to FILE: SHA-256, status, cells, files of output",
     [](Settings& s, const std::string& value) { s.manifest = notEmpty("--manifest", value); }},
    {"--shard", "K/N", kEvery, "Only the K-th of every N files, for N processes side by side",
     [](Settings& s, const std::string& value) { parseShard(value, s); }},
    {"--encoding", "NAME", kEvery, "The notebook's character set (default windows-1252)",
     [](Settings& s, const std::string& value) {
       s.encoding = value;
       s.encodingChosen = true;
     }},
    {"--strict", nullptr, kEvery, "Fail where there would be a warning, and print nothing",
     [](Settings& s, const std::string&) { s.strict = true; }},
    {"--salvage", nullptr, kEvery,
     "Print what can be read of a damaged notebook (the exit status stays 5)",
     [](Settings& s, const std::string&) { s.salvage = true; }},
    {"--max-memory", "SIZE", kEvery, "Give up beyond SIZE bytes (K, M, G; default 1G; 0: no limit)",
     [](Settings& s, const std::string& value) { s.maxMemory = parseSize("--max-memory", value); }},
    {"--max-output", "SIZE", kEvery,
     "Give up on more than SIZE bytes of output (default 64M and 256 for each byte of the file; "
     "0: no limit)",
     [](Settings& s, const std::string& value) { s.maxOutput = parseSize("--max-output", value); }},
    {"--max-time", "SECONDS", kEvery,
     "Give up after SECONDS of processor time (default 60; 0: no limit)",
     [](Settings& s, const std::string& value) { s.maxTime = parseSeconds(value); }},
    {"-q,--quiet", nullptr, kEvery, "No warnings and no progress; failures are still reported",
     [](Settings& s, const std::string&) { s.quiet = true; }},
    {"--no-sandbox", nullptr, kEvery,
     "Keep the powers that this program gives up before it reads a notebook (see --version)",
     [](Settings& s, const std::string&) { s.sandbox = false; }},
    {"--skip-empty", nullptr, kRows, "Leave out rows in which nothing shows",
     [](Settings& s, const std::string&) { s.skipEmpty = true; }},
    {"--trim", nullptr, kRows, "Remove blanks at both ends of each text",
     [](Settings& s, const std::string&) { s.trim = true; }},
    {"--values", nullptr, kRows,
     "What cells hold instead of what they show: all digits, dates by ISO 8601; hidden ones too",
     [](Settings& s, const std::string&) { s.values = true; }},
    {"--hidden", "keep|skip|mark", kRows,
     "Hidden rows and columns: keep them (the default), skip them, or keep and mark them with a "
     "column in front and a record above",
     [](Settings& s, const std::string& value) { s.hidden = parseHidden(value); }},
    {"--no-style", nullptr, kJsonOnly, "Leave out alignment, colours, borders and fonts",
     [](Settings& s, const std::string&) { s.noStyle = true; }},
    {"--with-source", nullptr, kCsvOnly,
     "Put the file's and the worksheet's name in front of each record",
     [](Settings& s, const std::string&) { s.withSource = true; }},
    {"-o,--output", "FILE", bitOf(CommandId::kXlsx), "Write this file, for one notebook",
     [](Settings& s, const std::string& value) { s.outputFile = notEmpty("--output", value); }},
    {"-d,--delimiter", "CHAR", kCsvOnly, "Between columns (default a comma; \\t or tab for a tab)",
     [](Settings& s, const std::string& value) { s.delimiter = parseDelimiter(value); }},
    {"--separator", "TEXT", kCsvOnly,
     "Between worksheets in one output (default \\n, an empty line; nothing with --with-source; "
     "\\f, \\t, \\r and \\\\ as in C)",
     [](Settings& s, const std::string& value) { s.separator = parseEscapes(value); }},
    {"--crlf", nullptr, kCsvOnly, "End lines with CR LF",
     [](Settings& s, const std::string&) { s.crlf = true; }},
    {"--bom", nullptr, kCsvOnly, "Begin with a byte order mark",
     [](Settings& s, const std::string&) { s.bom = true; }},
    {"--csv-safe", nullptr, kCsvOnly,
     "Put ' before texts that a spreadsheet would take for a formula (never before numbers)",
     [](Settings& s, const std::string&) { s.csvSafe = true; }},
};

// CLI11 takes "[a,b]" for a list wherever an option may stand for several values. A mark before the
// bracket keeps it what it is, the name of a file.
constexpr char kMark = '\1';

std::string marked(std::string argument) {
  if (argument.starts_with('[') || argument.starts_with(kMark)) argument.insert(0, 1, kMark);
  return argument;
}

std::string unmarked(std::string argument) {
  if (argument.starts_with(kMark)) argument.erase(0, 1);
  return argument;
}

void addOption(CLI::App& app, const OptionRow& row, Settings& settings) {
  // The results as they were typed: CLI11's own conversions give brackets and braces a meaning.
  const auto set = [&row, &settings](const CLI::results_t& values) {
    for (const std::string& value : values)
      row.set(settings, value);
    return true;
  };
  if (row.value == nullptr) {
    app.add_flag_callback(
        row.name, [&row, &settings] { row.set(settings, ""); }, row.help);
  } else {
    app.add_option(row.name, set, row.help)
        ->type_name(row.value)
        ->take_all()
        ->allow_extra_args(false);
  }
}

CLI::App* addCommand(CLI::App& app, const Command& command, Settings& settings) {
  CLI::App* const sub = app.add_subcommand(command.name, command.summary)->group("Commands");
  const auto setFiles = [&settings](const CLI::results_t& values) {
    for (const std::string& value : values)
      settings.files.push_back(unmarked(value));
    return true;
  };
  sub->add_option("FILE", setFiles, "Notebooks; - for standard input")
      ->expected(1, -1)
      ->allow_extra_args()
      ->type_name("");
  for (const OptionRow& row : kOptions)
    if ((row.commands & bitOf(command.id)) != 0) addOption(*sub, row, settings);
  return sub;
}

class HelpFormatter : public CLI::Formatter {
 public:
  HelpFormatter() { column_width(30); }
  std::string make_usage(const CLI::App* app, std::string name) const override {
    const bool top = app->get_parent() == nullptr;
    return "Usage: " + name + (top ? " COMMAND [OPTIONS] FILE...\n" : " [OPTIONS] FILE...\n");
  }
};

// How many letters must be added, removed or replaced to make one of the other.
std::size_t distance(std::string_view a, std::string_view b) {
  std::vector<std::size_t> row(b.size() + 1);
  for (std::size_t j = 0; j <= b.size(); ++j)
    row[j] = j;
  for (std::size_t i = 0; i < a.size(); ++i) {
    std::size_t diagonal = std::exchange(row[0], i + 1);
    for (std::size_t j = 0; j < b.size(); ++j) {
      const std::size_t replaced = diagonal + (a[i] == b[j] ? 0 : 1);
      diagonal = row[j + 1];
      row[j + 1] = std::min({replaced, row[j] + 1, row[j + 1] + 1});
    }
  }
  return row.back();
}

// CLI11 would take the word for a superfluous argument.
void checkCommand(std::string_view word) {
  constexpr std::size_t kLongestWord = 20;
  const Command* nearest = nullptr;
  std::size_t least = 3;  // what is further away was not meant
  for (const Command& command : kCommands) {
    if (word == command.name) return;
    if (word.size() > kLongestWord) continue;
    const std::size_t away = distance(word, command.name);
    if (away < least) nearest = &command, least = away;
  }
  const std::string hint =
      nearest == nullptr ? "see 'qps help'" : "did you mean '" + std::string(nearest->name) + "'?";
  throw UsageError{"'" + std::string(word) + "' is not a command (" + hint + ")"};
}

// Those of "qps help [COMMAND]" are the same as of "qps [COMMAND] --help".
std::vector<std::string> argumentsOf(int argc, const char* const* argv) {
  std::vector<std::string> arguments(argv + std::min(argc, 1), argv + argc);
  if (!arguments.empty() && arguments[0] == "help") {
    arguments.erase(arguments.begin());
    arguments.resize(std::min<std::size_t>(arguments.size(), 1));
    arguments.push_back("--help");
  }
  if (!arguments.empty() && !arguments[0].starts_with('-')) checkCommand(arguments[0]);
  return arguments;
}

// Where a command that writes files puts them.
void checkOutput(const Command& command, Settings& settings) {
  if (command.writeFile == nullptr) return;
  const std::string name = command.name;
  if (settings.outputFile.empty() == settings.outputDir.empty())
    throw UsageError{name + ": name the output with either --output or --output-dir"};
  if (settings.outputFile.empty()) return;
  if (settings.manyFiles()) throw UsageError{name + ": --output takes one notebook"};
  const auto path = filePathOf(settings.outputFile);
  if (!path.has_filename())
    throw UsageError{"--output: '" + settings.outputFile + "' names no file"};
  settings.outputDir = path.has_parent_path() ? fileNameOf(path.parent_path()) : ".";
  settings.outputFile = fileNameOf(path.filename());
}

void check(const Command& command, Settings& settings) {
  const bool both = !settings.files.empty() && !settings.files0From.empty();
  if (both) throw UsageError{"files are named on the command line and with --files0-from"};
  if (settings.files.empty() && settings.files0From.empty())
    throw UsageError{std::string(command.name) + ": no file is named (see 'qps " + command.name +
                     " --help')"};
  checkOutput(command, settings);
  const std::pair<const char*, bool> forFolders[] = {{"--skip-existing", settings.skipExisting},
                                                     {"--overwrite", settings.overwrite},
                                                     {"--base", !settings.base.empty()}};
  for (const auto& [option, given] : forFolders)
    if (given && settings.outputDir.empty())
      throw UsageError{std::string(option) + " goes with --output-dir"};
}

}  // namespace

std::span<const Command> commands() {
  return kCommands;
}

Invocation parseCommandLine(int argc, const char* const* argv) {
  std::vector<std::string> given = argumentsOf(argc, argv);
  Invocation invocation;
  CLI::App app("Read Quattro Pro for Windows notebooks (.wb1, .wb2, .wb3).", "qps");
  app.allow_windows_style_options(false);  // "/name" is a file everywhere
  app.formatter(std::make_shared<HelpFormatter>());
  app.footer("'qps COMMAND --help' lists the options of a command.");
  app.set_version_flag(
      "-V,--version",
      [] { return "qps " QPSREADER_VERSION_STRING "\nsandbox: " + enterSandbox("").description(); },
      "Print the version and the sandbox that this system allows, and exit");
  app.set_help_flag("-h,--help", "Print this help and exit");
  app.require_subcommand(0, 1);  // none is our own message

  std::vector<CLI::App*> subs;
  for (const Command& command : kCommands)
    subs.push_back(addCommand(app, command, invocation.settings));

  try {
    std::vector<std::string> arguments;  // CLI11 wants them from the last to the first
    for (auto argument = given.rbegin(); argument != given.rend(); ++argument)
      arguments.push_back(marked(std::move(*argument)));
    app.parse(std::move(arguments));
  } catch (const CLI::Success& request) {  // for the help or the version
    std::ostringstream text;
    app.exit(request, text, text);
    invocation.text = text.str();
    return invocation;
  } catch (const CLI::ParseError& error) {
    throw UsageError{std::string(error.what()) + " (see 'qps --help')"};
  }

  const auto parsed =
      std::find_if(subs.begin(), subs.end(), [](const CLI::App* sub) { return sub->parsed(); });
  if (parsed == subs.end()) throw UsageError{"no command is named (see 'qps --help')"};
  invocation.command = &kCommands[parsed - subs.begin()];
  check(*invocation.command, invocation.settings);
  return invocation;
}

}  // namespace qps
