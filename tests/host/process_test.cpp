// SPDX-License-Identifier: MIT
//
// Notebook where it takes a process: files, pipes, libraries, and exceptions.
#include <gtest/gtest.h>

#include <string>

#include <qpsreader/host/notebook.hpp>
#include "host/library_loader.hpp"
#include "tests/host/notebooks.h"
#include "tests/host/temporary_folder.h"
#include "tests/support/compound_writer.h"

#ifdef __linux__
#include <fcntl.h>
#include <unistd.h>
#endif

namespace qps::test {
namespace {

TEST(Notebook, DeliversOfAFileWhatTheReaderDelivers) {
  const TemporaryFolder folder;
  const Bytes plain = everyRecordNotebook().bytes();
  const auto expected = itemsBySheet(plain);
  for (Bytes bytes : {plain, writeCompound({}, {{"PerfectOffice_MAIN", plain}})}) {
    bytes.resize(bytes.size() + 100000);  // neither ends where the file ends
    const auto path = folder.write("file", bytes);
    expectItems("read into memory", expected, Notebook::open(path));
    expectItems("read in blocks", expected,
                Notebook::open(path, {.memoryLimit = 3 * bytes.size()}));
    expectItems("named by a string", expected, Notebook::open(path.string()));
  }
}

TEST(Notebook, ThrowsWhereAFailureIsNotAskedFor) {
  try {
    (void)Notebook::openBytes("%PDF-").value();
    ADD_FAILURE() << "no notebook";
  } catch (const BadExpectedAccess& error) {
    EXPECT_STREQ(reasonName(error.reason()), "not-a-notebook");
    EXPECT_NE(std::string_view(error.what()).find("PDF"), std::string_view::npos);
  }
}

// The reader's library under the name of the other one: it loads, and is not what was asked for.
TEST(Notebook, TakesTheCompoundDocumentLibraryFromTheFolderThatIsNamed) {
  const TemporaryFolder folder;
  const Bytes bytes = writeCompound({}, {{"NOVELL_MAIN", twoSheets(1).bytes()}});
  const auto relative = std::filesystem::relative(folder.path());
  // Another drive cannot be named from here.
  const OpenOptions options{.libraryFolder = relative.empty() ? folder.path() : relative};
  EXPECT_TRUE(Notebook::open(bytes, options).has_value()) << "none there: the usual one";
  std::filesystem::copy_file(platform::readerFile(), folder.path() / OLE_LIBRARY_NAME);
  const auto notebook = Notebook::open(bytes, options);
  ASSERT_FALSE(notebook.has_value());
  EXPECT_EQ(notebook.error().reason, Reason::kLibraryMissing);
}

#ifdef __linux__
TEST(Notebook, ReadsAPipeToItsEndFirst) {
  const Bytes bytes = twoSheets(9000).bytes();
  for (const std::size_t limit : {std::size_t{0}, std::size_t{100000}}) {
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    ASSERT_GE(::fcntl(ends[1], F_SETPIPE_SZ, 1 << 20), 1 << 20);
    ASSERT_EQ(::write(ends[1], bytes.data(), bytes.size()), std::ssize(bytes));
    ::close(ends[1]);
    const auto notebook =
        Notebook::open("/dev/fd/" + std::to_string(ends[0]), {.memoryLimit = limit});
    ::close(ends[0]);
    ASSERT_EQ(static_cast<bool>(notebook), limit == 0);
    if (notebook) {
      std::size_t cells = 0;
      for (const Sheet& sheet : notebook->sheets())
        for (const qps::Item& item : notebook->items(sheet))
          cells += item.cell() ? 1 : 0;
      EXPECT_EQ(cells, 18000u);
    } else {
      EXPECT_EQ(notebook.error().reason, Reason::kMemoryLimit);
    }
  }
}
#endif

}  // namespace
}  // namespace qps::test
