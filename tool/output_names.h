// SPDX-License-Identifier: MIT
//
// Names for the files in --output-dir. They depend on nothing but the notebook's name and what is
// in it, so that every process gives the same one, and no two names have one in common, but for
// those that pathOf leaves to be noticed when the file is written.
#ifndef QPSREADER_TOOL_OUTPUT_NAMES_H
#define QPSREADER_TOOL_OUTPUT_NAMES_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qps {

// A name without folders, controls and the characters that some system does not allow, which does
// not begin or end with a dot or a blank, and which is at most 100 bytes long. Never empty.
std::string safeName(std::string_view utf8);

// For the worksheets of a notebook, in their order: safe names without a dot (the last dot but one
// of an output ends the notebook's name), "~2" and so on added where a name was there before, also
// when only the case of letters differs.
std::vector<std::string> sheetFileNames(const std::vector<std::string>& sheets);

class OutputNames {
 public:
  // `base` is cut off from the front of names; "" is none. Where the disk ignores the case of
  // letters, names with capitals get a mark that says which ones, and letters of which disks have
  // different opinions are written as their bytes.
  OutputNames(const std::string& base, bool diskIgnoresCase);
  OutputNames(const OutputNames&) = delete;
  OutputNames& operator=(const OutputNames&) = delete;

  // The notebook's path below --output-dir, with "/" between folders: "/a/./b.wb2" is "a/b.wb2".
  // What some system does not allow in names is written as "%3A". Throws Failure for a name that
  // leads out (".."), that is not below the base, and for an absolute name after a relative one or
  // the other way round: "/a" and "a" would have the same. Those of another process, or relative
  // names from another folder, are found out by OutputFile::finish.
  std::string pathOf(const std::string& source);

 private:
  struct Parts {
    bool absolute = false;
    std::vector<std::string_view> names;
  };
  static Parts split(std::string_view path);
  void cutBase(Parts& parts) const;

  std::string baseText_;  // what the parts of base_ are views of
  std::optional<Parts> base_;
  bool diskIgnoresCase_;
  std::optional<bool> absolute_;  // what the names before were
};

}  // namespace qps

#endif  // QPSREADER_TOOL_OUTPUT_NAMES_H
