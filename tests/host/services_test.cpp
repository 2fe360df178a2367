// SPDX-License-Identifier: MIT
//
// The services table: where libraries are looked for, and the conversion of letters.
#include <gtest/gtest.h>

#include <cstring>
#include <fstream>
#include <iterator>
#include <string>

#include <qpsreader/ole_interface.h>
#include "host/heap_pool.hpp"
#include "host/host_services.hpp"
#include "host/library_loader.hpp"
#include "tests/host/temporary_folder.h"

namespace qps::test {
namespace {

namespace fs = std::filesystem;

// The compound-document library, as the build lays it where an installed one would lie.
fs::path builtLibrary() {
  return platform::readerFile().parent_path() / OLE_LIBRARY_NAME;
}

// Makes the current directory another one until its end.
struct CurrentDirectory {
  explicit CurrentDirectory(const fs::path& path) { fs::current_path(path); }
  ~CurrentDirectory() { fs::current_path(before); }
  fs::path before = fs::current_path();
};

TEST(LibraryLoader, TakesBareNamesOnly) {
  const fs::path library = builtLibrary();
  const std::string folderName = library.parent_path().filename().string();
  for (const std::string& name :
       {library.string(), "./" + std::string(OLE_LIBRARY_NAME),
        "../" + folderName + "/" + OLE_LIBRARY_NAME, ".\\" + std::string(OLE_LIBRARY_NAME),
        std::string(), std::string("."), std::string("..")})
    EXPECT_EQ(loadLibraryByName(name.c_str()), nullptr) << name;
}

TEST(LibraryLoader, LooksBesideTheReaderAndInAnAbsoluteFolderThatIsNamed) {
  ASSERT_TRUE(platform::readerFile().is_absolute());
  const TemporaryFolder folder;
  fs::copy_file(builtLibrary(), folder.path() / "decoy.dll");
  const CurrentDirectory there(folder.path());
  const struct {
    const char* name;
    fs::path folder;
    bool found;
  } rows[] = {{OLE_LIBRARY_NAME, {}, true},       {OLE_LIBRARY_NAME, folder.path(), true},
              {"decoy.dll", folder.path(), true}, {"decoy.dll", {}, false},
              {"decoy.dll", ".", false},          {"no-such-library.dll", folder.path(), false}};
  for (const auto& row : rows) {
    void* const library = loadLibraryByName(row.name, row.folder);
    EXPECT_EQ(library != nullptr, row.found) << row.name << " in " << row.folder;
    if (library != nullptr) unloadLibrary(library);
  }
}

TEST(HostServices, LoadsALibraryOnce) {
  HeapPool heap;
  HostServices services(heap);
  void* first = nullptr;
  void* second = nullptr;
  ASSERT_NE(services.loadLibrary(&services, OLE_LIBRARY_NAME, &first), 0);
  services.freeLibrary(&services, first);
  ASSERT_NE(services.loadLibrary(&services, OLE_LIBRARY_NAME, &second), 0);
  EXPECT_EQ(first, second);
  EXPECT_NE(services.getSymbol(&services, second, OLE_ENTRY_POINT), nullptr);
  EXPECT_EQ(services.getSymbol(&services, second, "noSuchSymbol"), nullptr);
  services.freeLibrary(&services, second);

  void* none = &services;
  EXPECT_EQ(services.loadLibrary(&services, "no-such-library.dll", &none), 0);
  EXPECT_EQ(none, nullptr);
}

#if defined(__linux__)
bool isLoaded(const fs::path& library) {
  std::ifstream maps("/proc/self/maps");
  const std::string all{std::istreambuf_iterator<char>(maps), {}};
  return all.find(library.string()) != std::string::npos;
}

// Until its end, so that many notebooks load it once; of two, only the first.
TEST(HostServices, KeepsOneLibrary) {
  const TemporaryFolder folder;
  const fs::path paths[] = {folder.path() / "first.dll", folder.path() / "second.dll"};
  HeapPool heap;
  {
    HostServices services(heap, folder.path());
    for (const fs::path& path : paths) {
      fs::copy_file(builtLibrary(), path);
      void* library = nullptr;
      ASSERT_NE(services.loadLibrary(&services, path.filename().string().c_str(), &library), 0);
      EXPECT_TRUE(isLoaded(path));
      services.freeLibrary(&services, library);
    }
    EXPECT_TRUE(isLoaded(paths[0]));
    EXPECT_FALSE(isLoaded(paths[1]));
  }
  EXPECT_FALSE(isLoaded(paths[0]));
}
#endif

TEST(HostServices, ConvertsAsciiLettersAlone) {
  HeapPool heap;
  HostServices services(heap);
  const struct {
    const char* text;
    const char* lower;
    const char* upper;
  } rows[] = {
      {"", "", ""},
      {"Wednesday", "wednesday", "WEDNESDAY"},
      {"@AZ[`az{ 09", "@az[`az{ 09", "@AZ[`AZ{ 09"},
      {"I i \xC4\xE4\xDD\xFD", "i i \xC4\xE4\xDD\xFD", "I I \xC4\xE4\xDD\xFD"},
  };
  for (const auto& row : rows) {
    std::string lower = row.text;
    std::string upper = row.text;
    EXPECT_STREQ(services.toLowerText(&services, lower.data()), row.lower);
    EXPECT_STREQ(services.toUpperText(&services, upper.data()), row.upper);
  }
}

}  // namespace
}  // namespace qps::test
