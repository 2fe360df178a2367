// SPDX-License-Identifier: MIT
//
// Any bytes as a notebook in a compound document. The first byte of the input chooses: 0 takes the
// rest as the document; anything else wraps the rest in a document of a shape that the byte
// chooses, and the items must then be those of the same bytes in a plain file.
#include <vector>

#include "fuzz/session.h"
#include "tests/support/compound_writer.h"

namespace {

using namespace qps::fuzz;
using namespace qps::test;

constexpr uint32_t kMostItems = 512;

uint64_t visit(std::span<const uint8_t> file, const WorkLimit& limit) {
  LeanHost host(file);
  host.seekBeyondEnd = true;  // as streams in a container do
  const uint64_t digest = visitNotebook(host, kMostItems, limit);
  host.requireAtRest();
  return digest;
}

std::vector<std::byte> wrap(uint8_t shape, std::span<const uint8_t> notebook) {
  const CompoundOptions options{
      .version = shape % 8 == 7 ? 4U : 3U,  // large sectors make a target slow
      .sectors = static_cast<SectorOrder>(shape % 3),
      .siblings = static_cast<SiblingOrder>(shape / 3 % 3),
      .miniStreamCutoff = (shape & 32) != 0 ? 4096U : 0U,
  };
  const auto bytes = std::as_bytes(notebook);
  const std::vector<std::byte> contents(bytes.begin(), bytes.end());
  const char* name = (shape & 64) != 0 ? "PerfectOffice_MAIN" : "NOVELL_MAIN";
  return writeCompound(options, {{"Other", {std::byte{1}}}, {name, contents}});
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  const std::span<const uint8_t> rest(data + 1, size - 1);
  if (data[0] == 0) {
    visit(rest, kCompoundWork);
    return 0;
  }
  // What is no plain notebook on its own is not compared: a document in a document, and fewer bytes
  // than are looked at to tell.
  constexpr size_t kLookAheadBytes = 8;
  const bool isDocument = size > 1 && rest[0] == 0xD0;
  const std::vector<std::byte> document = wrap(data[0], rest);
  const uint64_t wrapped =
      visit({reinterpret_cast<const uint8_t*>(document.data()), document.size()}, kCompoundWork);
  if (rest.size() >= kLookAheadBytes && !isDocument) {
    require(visit(rest, kPlainWork) == wrapped, "the same items from a container");
  }
  return 0;
}
