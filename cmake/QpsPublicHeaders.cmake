# SPDX-License-Identifier: MIT
# The public headers as their users see them: <qpsreader/qps_reader.h>, <qpsreader/host/notebook.hpp>.
# They are written to include/ in the build tree, from where a project that embeds this one takes
# them and from where they are installed. Our own sources include them by room.
set(QPS_PUBLIC_HEADERS
  reader/host_tables.h
  reader/ole_interface.h
  reader/qps_reader.h
  items/ss_item.h
  sheetinfo/worksheet_list.h
  host/expected.hpp
  host/file_facts.hpp
  host/item.hpp
  host/notebook.hpp
  host/text_arena.hpp)

foreach(header ${QPS_PUBLIC_HEADERS})
  file(READ ${PROJECT_SOURCE_DIR}/${header} text)
  string(REGEX REPLACE "#include \"(reader|items|sheetinfo)/([^\"]*)\"" "#include <qpsreader/\\2>"
    text "${text}")
  string(REGEX REPLACE "#include \"host/([^\"]*)\"" "#include <qpsreader/host/\\1>" text "${text}")
  string(REGEX REPLACE "^(reader|items|sheetinfo)/" "" publicName ${header})
  file(CONFIGURE OUTPUT ${PROJECT_BINARY_DIR}/include/qpsreader/${publicName} CONTENT "${text}" @ONLY)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/${header})
endforeach()
