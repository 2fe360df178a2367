// SPDX-License-Identifier: MIT
#include "tool/manifest.h"

#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <string_view>
#include <system_error>

#include "tool/file_names.h"
#include "tool/output.h"
#include "tool/text_forms.h"

#if defined(QPS_NETTLE)
#include <nettle/sha2.h>
#endif

namespace qps {
namespace {

namespace fs = std::filesystem;

// No notebook is larger; the SHA-256 of what is would take minutes.
constexpr std::uint64_t kMostBytes = 0xFFFFFFFF;

std::string hexadecimal(std::string_view bytes) {
  std::string digits;
  for (const char byte : bytes) {
    digits += "0123456789abcdef"[static_cast<unsigned char>(byte) >> 4U];
    digits += "0123456789abcdef"[static_cast<unsigned char>(byte) & 0xFU];
  }
  return digits;
}

struct Content {
  std::optional<std::uint64_t> size;
  std::string sha256;  // "" when it is not known
};

#if defined(QPS_NETTLE)

class Sha256 {
 public:
  Sha256() { sha256_init(&state_); }
  void add(const void* bytes, std::size_t size) {
    sha256_update(&state_, size, static_cast<const std::uint8_t*>(bytes));
  }
  std::string text() {
    std::array<std::uint8_t, SHA256_DIGEST_SIZE> digest{};
    sha256_digest(&state_, digest.size(), digest.data());
    return hexadecimal({reinterpret_cast<const char*>(digest.data()), digest.size()});
  }

 private:
  sha256_ctx state_{};
};

#else

class Sha256 {
 public:
  void add(const void* /*bytes*/, std::size_t /*size*/) {}
  std::string text() { return ""; }
};

#endif

Content contentOf(std::span<const std::byte> bytes) {
  Sha256 sum;
  sum.add(bytes.data(), bytes.size());
  return {bytes.size(), sum.text()};
}

Content contentOf(const std::string& name) {
  std::error_code error;
  const fs::path path = filePathOf(name);
  if (!fs::is_regular_file(path, error)) return {};
  const std::uint64_t size = fs::file_size(path, error);
  if (error || size > kMostBytes) return {error ? std::nullopt : std::optional(size), ""};
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(openFile(path, "rb"), std::fclose);
  if (file == nullptr) return {size, ""};
  std::setvbuf(file.get(), nullptr, _IONBF, 0);
  Sha256 sum;
  std::array<char, 65536> block;
  std::uint64_t read = 0;
  while (const std::size_t count = std::fread(block.data(), 1, block.size(), file.get())) {
    sum.add(block.data(), count);
    read += count;
    if (read > kMostBytes) return {size, ""};
  }
  return std::ferror(file.get()) != 0 ? Content{size, ""} : Content{read, sum.text()};
}

// The registry's identifiers; null for a version that it does not have.
const char* pronomOf(const NotebookFacts& facts) {
  if (facts.kind == FileKind::kCompoundNotebook) return "fmt/836";
  if (facts.formatVersion == 0x1001) return "fmt/834";
  return facts.formatVersion == 0x1002 ? "fmt/835" : nullptr;
}

const char* outcomeOf(const ManifestEntry& entry) {
  if (entry.skipped) return "skipped";
  if (entry.status == Status::kOk) return "done";
  return entry.worksheets ? "salvaged" : "failed";
}

using Writer = rapidjson::Writer<rapidjson::StringBuffer>;

class Object {
 public:
  Object() { writer_.StartObject(); }

  void add(const char* name, std::string_view value) {
    writer_.Key(name);
    string(value);
  }
  void add(const char* name, std::optional<std::uint64_t> value) {
    writer_.Key(name);
    if (value)
      writer_.Uint64(*value);
    else
      writer_.Null();
  }
  void addOrNull(const char* name, const char* value) {
    writer_.Key(name);
    if (value != nullptr && *value != '\0')
      writer_.String(value);
    else
      writer_.Null();
  }
  void add(const char* name, const std::vector<std::string>& values) {
    writer_.Key(name);
    writer_.StartArray();
    for (const std::string& value : values)
      string(value);
    writer_.EndArray();
  }
  std::string line() {
    writer_.EndObject();
    return std::string(buffer_.GetString(), buffer_.GetSize()) + "\n";
  }

 private:
  void string(std::string_view value) {
    writer_.String(value.data(), static_cast<rapidjson::SizeType>(value.size()));
  }

  rapidjson::StringBuffer buffer_;
  Writer writer_{buffer_};
};

std::string lineOf(const char* command, const ManifestEntry& entry, const Content& content) {
  Object object;
  const std::string source = validUtf8(entry.source);
  object.add("source", source);
  if (source != entry.source) object.add("sourceBytes", hexadecimal(entry.source));
  object.add("command", command);
  object.add("outcome", outcomeOf(entry));
  object.add("status", static_cast<std::uint64_t>(entry.status));
  object.addOrNull("message", validUtf8(entry.message).c_str());
  object.add("warnings", entry.warnings);
  object.add("size", content.size);
  object.addOrNull("sha256", content.sha256.c_str());
  object.addOrNull("kind", entry.facts ? fileKindName(entry.facts->kind) : nullptr);
  object.addOrNull("pronom", entry.facts ? pronomOf(*entry.facts) : nullptr);
  object.add("worksheets", entry.worksheets);
  object.add("cells", entry.worksheets ? std::optional(entry.cells) : std::nullopt);
  object.add("outputs", entry.outputs);
  return object.line();
}

// Null where the object has no such member.
const rapidjson::Value* memberOf(const rapidjson::Value& object, const char* name) {
  const auto member = object.FindMember(name);
  return member == object.MemberEnd() ? nullptr : &member->value;
}

std::string stringIn(const rapidjson::Value& object, const char* name) {
  const rapidjson::Value* const value = memberOf(object, name);
  if (value == nullptr || !value->IsString()) return "";
  return {value->GetString(), value->GetStringLength()};
}

}  // namespace

Manifest::Manifest(const Settings& settings, const char* command) : command_(command) {
  const std::string& name = settings.manifest;
  const std::string kept = settings.skipExisting ? keepLines(settings) : "";
  try {
    // Whole or not at all, so that nothing that was kept can be lost.
    const fs::path path = filePathOf(name);
    OutputFile renewed(path.has_parent_path() ? path.parent_path() : ".",
                       fileNameOf(path.filename()));
    renewed.out().write(kept);
    static_cast<void>(renewed.finish(true));
    errno = 0;
    file_.reset(openFile(path, "ab"));
    if (file_ == nullptr) throw WriteError{errno};
  } catch (const WriteError& error) {
    throw UsageError{"--manifest: " + name + ": " + error.message()};
  }
}

// The last line may be cut short by the end of the process that wrote it.
std::string Manifest::keepLines(const Settings& settings) {
  std::ifstream old(filePathOf(settings.manifest), std::ios::binary);
  std::string kept;
  for (std::string line; std::getline(old, line) && !old.eof();)
    if (keeps(line, settings)) kept += line + "\n";
  return kept;
}

bool Manifest::keeps(const std::string& line, const Settings& settings) {
  rapidjson::Document object;
  if (object.Parse(line.data(), line.size()).HasParseError() || !object.IsObject()) return false;
  const std::string outcome = stringIn(object, "outcome");
  const std::string source = stringIn(object, "source");
  if ((outcome != "done" && outcome != "salvaged") || stringIn(object, "command") != command_ ||
      object.HasMember("sourceBytes"))
    return false;
  const rapidjson::Value* const outputs = memberOf(object, "outputs");
  if (outputs == nullptr || !outputs->IsArray()) return false;
  const auto exists = [&settings](const rapidjson::Value& output) {
    std::error_code ignored;
    return output.IsString() &&
           fs::exists(filePathOf(settings.outputDir) / filePathOf(output.GetString()), ignored);
  };
  const auto list = outputs->GetArray();
  return !list.Empty() && std::all_of(list.begin(), list.end(), exists) &&
         kept_.insert(source).second;
}

void Manifest::add(const ManifestEntry& entry, std::span<const std::byte> bytes) {
  const Content content = bytes.data() != nullptr ? contentOf(bytes) : contentOf(entry.source);
  const std::string line = lineOf(command_.c_str(), entry, content);
  errno = 0;
  if (std::fwrite(line.data(), 1, line.size(), file_.get()) != line.size() ||
      std::fflush(file_.get()) != 0)
    throw WriteError{errno};
}

}  // namespace qps
