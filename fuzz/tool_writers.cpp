// SPDX-License-Identifier: MIT
//
// The tool's own way with a notebook: decoder, document, writer, limits. Of an input, 15 bytes name
// the encoding (what is no name picks one of those of the system), three are the command and its
// options, and the rest is the notebook. What comes out is checked by output_checks.h; for one
// input in 32 it must also be the same twice, and as long as a rehearsal said.
#include <cstdio>
#include <map>
#include <memory>
#include <numeric>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "fuzz/input_bytes.h"
#include "fuzz/output_checks.h"
#include "tests/support/recording_host.h"
#include "tool/inputs.h"
#include "tool/output.h"
#include "tool/output_bound.h"
#include "tool/output_names.h"
#include "tool/progress.h"
#include "tool/time_limit.h"

namespace {

bool onTerminal = false;

}  // namespace

// The C library's, which the writers ask what they write to.
extern "C" int isatty(int) noexcept {
  return onTerminal ? 1 : 0;
}

namespace {

using qps::test::require;

constexpr std::size_t kNameBytes = 15;

// All that `iconv -l` lists, as "NAME//" a line.
std::vector<std::string> namesOfSystem() {
  std::vector<std::string> names{"windows-1252", "ISO-8859-1", "UTF-8", "ASCII"};
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> list(popen("iconv -l", "r"), &pclose);
  char line[256];
  while (list && std::fgets(line, sizeof line, list.get()) != nullptr) {
    const std::string_view text(line);
    names.emplace_back(text.substr(0, text.find_first_of("/ \n")));
  }
  return names;
}

std::size_t sumOf(std::span<const std::uint8_t> bytes) {
  return std::accumulate(bytes.begin(), bytes.end(), std::size_t{0},
                         [](std::size_t sum, std::uint8_t byte) { return 31 * sum + byte; });
}

// Each is opened once; null when there is none of that name, or none that holds ASCII.
const qps::Decoder* decoderNamed(const std::string& name) {
  static std::map<std::string, std::optional<qps::Decoder>> decoders;
  const auto [place, isNew] = decoders.try_emplace(name);
  try {
    if (isNew) place->second.emplace(name);
  } catch (const qps::UsageError& error) {
    require(!error.reason.empty(), "a refused encoding has a reason");
  }
  return place->second ? &*place->second : nullptr;
}

const qps::Decoder& decoderFor(std::span<const std::uint8_t> bytes) {
  static const std::vector<std::string> names = namesOfSystem();
  const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  const std::string name(text.substr(0, text.find('\0')));
  if (std::find(names.begin(), names.end(), name) != names.end())
    if (const qps::Decoder* const decoder = decoderNamed(name)) return *decoder;
  for (std::size_t number = sumOf(bytes);; ++number)
    if (const auto* const decoder = decoderNamed(names[number % names.size()])) return *decoder;
}

// A file that only this program sees, and that is full after so many bytes.
class Capture {
 public:
  Capture() {
    file_.reset(fopencookie(this, "w", {nullptr, &Capture::append, nullptr, nullptr}));
    require(file_ != nullptr, "a file in memory");
  }
  std::FILE* file() { return file_.get(); }
  void empty(std::uint64_t mostBytes) {
    bytes_.clear();
    mostBytes_ = mostBytes;
    std::clearerr(file_.get());
  }
  const std::string& bytes() const { return bytes_; }

 private:
  static ssize_t append(void* self, const char* bytes, std::size_t count) {
    auto& capture = *static_cast<Capture*>(self);
    if (capture.bytes_.size() + count > capture.mostBytes_) return 0;
    capture.bytes_.append(bytes, count);
    return static_cast<ssize_t>(count);
  }

  struct Close {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };
  std::unique_ptr<std::FILE, Close> file_;
  std::string bytes_;
  std::uint64_t mostBytes_ = 0;
};

// Both are kept, because an Output's block of bytes costs more than most inputs do.
struct Printer {
  Capture capture;
  qps::Output out{capture.file()};
};

struct Input {
  const qps::Decoder& decoder;
  const qps::Command& command;
  qps::Settings settings;
  std::span<const std::byte> notebook;
  std::uint64_t mostOutput;
  bool thorough;
};

Input inputOf(std::span<const std::uint8_t> bytes) {
  qps::fuzz::InputBytes input(bytes);
  const qps::Decoder& decoder = decoderFor(input.take(kNameBytes));
  const unsigned rows = input.u8();
  const unsigned choice = input.u8();
  const unsigned flags = input.u8();
  const auto commands = qps::commands();
  qps::Settings settings;
  settings.encoding = decoder.name();
  settings.delimiter = ",;\t "[choice >> 3 & 3];
  settings.bom = (choice >> 5 & 1) != 0;
  settings.files.resize(1 + (choice >> 6 & 1));
  onTerminal = (choice >> 7) != 0;
  settings.salvage = (flags & 1) != 0;
  settings.trim = (flags & 2) != 0;
  settings.skipEmpty = (flags & 4) != 0;
  settings.csvSafe = (flags & 8) != 0;
  settings.crlf = (flags & 16) != 0;
  settings.strict = (flags & 32) != 0;
  settings.maxMemory = std::uint64_t{16} << (10 + (flags >> 6 & 3) * 2);
  settings.values = (rows & 1) != 0;
  settings.hidden = std::array{qps::Hidden::kKeep, qps::Hidden::kSkip, qps::Hidden::kMark,
                               qps::Hidden::kKeep}[rows >> 1 & 3];
  settings.noStyle = (rows & 8) != 0;
  const auto rest = std::as_bytes(input.rest());
  const qps::Command& chosen = commands[(choice & 7) % commands.size()];
  // What cannot go to standard output is the library's work.
  const qps::Command& command = chosen.write != nullptr ? chosen : commands.front();
  return {decoder,
          command,
          settings,
          rest,
          (std::uint64_t{32} << 10) + 64 * rest.size(),
          sumOf(bytes) % 32 == 0};
}

// Whether a rehearsal with this limit goes through.
bool fits(std::uint64_t most, const Input& input, const qps::Document& document,
          std::span<const qps::SheetData> sheets, const qps::Output& real) {
  qps::Output nowhere(real, most);
  try {
    input.command.write(nowhere, document, sheets, input.settings);
    nowhere.flush();
    return true;
  } catch (const qps::Failure& failure) {
    require(failure.status == qps::Status::kLimit, "only the limit ends a rehearsal");
    return false;
  }
}

void check(std::string_view output, const Input& input, const qps::Document& document,
           std::span<const qps::SheetData> sheets) {
  switch (input.command.id) {
    case qps::CommandId::kCsv:
      return qps::fuzz::checkCsv(output, document, sheets[0], input.settings, onTerminal);
    case qps::CommandId::kJson:
      return qps::fuzz::checkJsonLines(output, document);
    case qps::CommandId::kHtml:
      return qps::fuzz::checkPage(output);
    default:
      return qps::fuzz::checkCharacters(output, true);
  }
}

std::string write(const Input& input, const qps::Document& document,
                  std::span<const qps::SheetData> sheets) {
  static std::optional<Printer> printers[2];  // an Output asks once whether it is on a terminal
  std::optional<Printer>& printer = printers[onTerminal ? 1 : 0];
  if (!printer) printer.emplace();
  auto& [capture, out] = *printer;
  capture.empty(input.mostOutput);
  const bool fitting = !input.thorough || fits(input.mostOutput, input, document, sheets, out);
  try {
    input.command.write(out, document, sheets, input.settings);
    out.flush();
  } catch (const qps::WriteError&) {
    require(!input.thorough || !fitting, "what a rehearsal lets through has room");
    return "more than the limit";
  }
  const std::string& output = capture.bytes();
  require(fitting, "what a rehearsal stops has no room");
  require(output.size() <= qps::outputBound(document, input.command.need, input.settings),
          "the bound of the output holds");
  require(
      !input.thorough || output.empty() || !fits(output.size() - 1, input, document, sheets, out),
      "a rehearsal counts every byte");
  check(output, input, document, sheets);
  return output;
}

// All that is written, or why nothing is.
std::string visit(const Input& input) {
  try {
    auto notebook =
        qps::Notebook::open(input.notebook, {static_cast<std::size_t>(input.settings.maxMemory)});
    if (!notebook) return qps::failureOf(notebook.error()).reason;
    qps::OpenedFile opened{nullptr, *std::move(notebook), input.notebook.size(),
                           input.settings.maxMemory};
    const qps::TimeLimit time(input.settings.maxTime);
    qps::Progress progress(false);
    const qps::Document document = qps::readDocument("in.wb2", opened, input.command,
                                                     input.settings, input.decoder, time, progress);
    if (!input.command.filePerSheet) return write(input, document, document.sheets);
    std::string all;
    std::vector<std::string> sheetNames;
    for (const qps::SheetData& sheet : document.sheets)
      sheetNames.push_back(sheet.name);
    const std::vector<std::string> fileNames = qps::sheetFileNames(sheetNames);
    require(std::set(fileNames.begin(), fileNames.end()).size() == document.sheets.size(),
            "a name for each worksheet");
    for (std::size_t i = 0; i < fileNames.size(); ++i) {
      const std::string& name = fileNames[i];
      qps::fuzz::checkCharacters(name, true);
      require(name.size() < 128 && name.find_first_of("/\\:*?\"<>|.\n\t") == std::string::npos,
              "a name that every system takes");
      all += name + write(input, document, {&document.sheets[i], 1});
    }
    return all;
  } catch (const qps::Failure& failure) {
    require(!failure.reason.empty() && failure.status != qps::Status::kOk, "a reason");
    qps::fuzz::checkUtf8(failure.reason);  // whoever prints it makes it visible
    return failure.reason;
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const Input input = inputOf({data, size});
  const std::string output = visit(input);
  require(!input.thorough || output == visit(input), "the same twice");
  return 0;
}
