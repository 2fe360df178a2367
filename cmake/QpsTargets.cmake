# SPDX-License-Identifier: MIT
# How this project's targets are compiled and linked; each fact once.

set(QPS_GNU_LIKE $<OR:$<CXX_COMPILER_ID:GNU>,$<CXX_COMPILER_ID:Clang>>)

# Warnings for our own code; they are errors where QPSREADER_WERROR is on (every preset), and never in
# a stranger's build.
function(qps_set_warnings target)
  target_compile_options(${target} PRIVATE
    $<${QPS_GNU_LIKE}:-Wall -Wextra -Wconversion -Wshadow>
    $<$<AND:$<BOOL:${QPSREADER_WERROR}>,${QPS_GNU_LIKE}>:-Werror>)
endfunction()

# Code that stays within the reader's means: the standard library without exceptions, RTTI, a heap or
# guarded statics; only what is marked is exported.
function(qps_set_reader_means target)
  set_target_properties(${target} PROPERTIES
    POSITION_INDEPENDENT_CODE ON
    C_VISIBILITY_PRESET hidden
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON)
  target_compile_options(${target} PRIVATE
    $<${QPS_GNU_LIKE}:-fno-exceptions -fno-rtti -fno-threadsafe-statics>)
  target_include_directories(${target} PRIVATE ${PROJECT_SOURCE_DIR})
  qps_set_warnings(${target})
endfunction()

# A plug-in: hardened, without undefined symbols, exporting exactly the names in the file `exports`.
function(qps_set_plugin target exports)
  file(STRINGS ${exports} names REGEX "^[A-Za-z]")
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${exports})
  set_target_properties(${target} PROPERTIES LINK_DEPENDS ${exports})
  if(WIN32)
    list(JOIN names "\n" lines)
    set(script ${CMAKE_CURRENT_BINARY_DIR}/${target}.def)
    file(CONFIGURE OUTPUT ${script} CONTENT "EXPORTS\n@lines@\n" @ONLY)
    target_sources(${target} PRIVATE ${script})
  else()
    list(JOIN names ";\n    " lines)
    set(script ${CMAKE_CURRENT_BINARY_DIR}/${target}.map)
    file(CONFIGURE OUTPUT ${script} CONTENT "{\n  global:\n    @lines@;\n  local: *;\n};\n" @ONLY)
    target_link_options(${target} PRIVATE -Wl,--version-script=${script} -Wl,-z,relro,-z,now
      -Wl,-z,noexecstack -Wl,--as-needed)
    if(NOT CMAKE_CXX_FLAGS MATCHES "-fsanitize")
      target_link_options(${target} PRIVATE -Wl,--no-undefined)
    endif()
  endif()
endfunction()

function(qps_add_reader_objects target)
  add_library(${target} OBJECT)
  qps_set_reader_means(${target})
  # One compilation serves the static and the shared library: a Windows DLL exports by its .def file.
  target_compile_definitions(${target} PRIVATE $<$<BOOL:${WIN32}>:QPS_STATIC>)
endfunction()

function(qps_add_reader_libraries objects)
  set(includes
    $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>
    $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/qpsreader>)

  add_library(qpsreader SHARED $<TARGET_OBJECTS:${objects}>)
  set_target_properties(qpsreader PROPERTIES
    VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR} LINKER_LANGUAGE CXX
    EXPORT_NAME reader)
  target_include_directories(qpsreader INTERFACE ${includes})
  qps_set_plugin(qpsreader ${PROJECT_SOURCE_DIR}/reader/exports.txt)
  add_library(qpsreader::reader ALIAS qpsreader)

  add_library(qpsreader_static STATIC $<TARGET_OBJECTS:${objects}>)
  set_target_properties(qpsreader_static PROPERTIES
    OUTPUT_NAME qpsreader LINKER_LANGUAGE CXX EXPORT_NAME reader_static)
  target_compile_definitions(qpsreader_static INTERFACE QPS_STATIC)
  target_include_directories(qpsreader_static INTERFACE ${includes})
  add_library(qpsreader::reader_static ALIAS qpsreader_static)
endfunction()
