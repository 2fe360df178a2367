# SPDX-License-Identifier: MIT
# How this project's targets are compiled and linked; each fact once. Nothing here reaches a target
# of a project that embeds this one.
include(CheckPIESupported)
check_pie_supported()
include(CheckCXXCompilerFlag)
include(CheckCXXSourceCompiles)

# Sanitizers bring their own checks and their own way of resolving symbols.
if(CMAKE_CXX_FLAGS MATCHES "-fsanitize")
  set(QPS_SANITIZED TRUE)
endif()

# What the compiler has of guards against a program that is led astray: their flags, each tried once.
if(NOT WIN32)
  foreach(flag -fstack-protector-strong -fstack-clash-protection -fcf-protection)
    string(MAKE_C_IDENTIFIER "QPS_HAS${flag}" known)
    check_cxx_compiler_flag(${flag} ${known})
    if(${known})
      list(APPEND QPS_GUARDS ${flag})
    endif()
  endforeach()
  # Its third level also checks sizes that are only known when the program runs.
  set(CMAKE_REQUIRED_FLAGS "-O2 -Werror -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=3")
  check_cxx_source_compiles("#include <cstdio>\nint main() {}" QPS_HAS_FORTIFY_3)
  unset(CMAKE_REQUIRED_FLAGS)
endif()

# Warnings for our own code; they are errors where QPSREADER_WERROR is on (every preset), and never
# in a stranger's build.
function(qps_set_warnings target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wconversion -Wshadow
    $<$<BOOL:${QPSREADER_WERROR}>:-Werror>)
endfunction()

# Everything that is installed: position-independent, hardened, and the same bytes wherever the source
# lies. _FORTIFY_SOURCE needs an optimising compiler, and takes the place of whatever the compiler or
# a package build defined.
function(qps_set_hardening target)
  if(QPS_WASM)
    return()
  endif()
  set_target_properties(${target} PROPERTIES POSITION_INDEPENDENT_CODE ON)
  if(WIN32)
    return()
  endif()
  target_compile_options(${target} PRIVATE ${QPS_GUARDS})
  target_link_options(${target} PRIVATE
    -Wl,-z,relro -Wl,-z,now -Wl,-z,noexecstack -Wl,--as-needed)
  if(NOT QPS_SANITIZED)
    set(hardening -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=$<IF:$<BOOL:${QPS_HAS_FORTIFY_3}>,3,2>
      -ffile-prefix-map=${PROJECT_SOURCE_DIR}=.)
    target_compile_options(${target} PRIVATE
      "$<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:${hardening}>")
    target_link_options(${target} PRIVATE -Wl,--no-undefined)
  endif()
endfunction()

# Code of ours that is installed, whatever it is part of.
function(qps_set_product target)
  set_target_properties(${target} PROPERTIES
    C_VISIBILITY_PRESET hidden
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON)
  target_include_directories(${target} PRIVATE ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/include)
  # Compiled once for every use: on Windows too, where a DLL exports by its .def file.
  target_compile_definitions(${target} PRIVATE $<$<BOOL:${WIN32}>:QPS_STATIC>)
  qps_set_warnings(${target})
  qps_set_hardening(${target})
endfunction()

# The standard library checks indices and the like, release builds included: a fault of ours in host or
# tool then ends the program instead of leading it astray. By either library's own name for it.
function(qps_set_checked target)
  target_compile_definitions(${target} PRIVATE _GLIBCXX_ASSERTIONS
    _LIBCPP_HARDENING_MODE=_LIBCPP_HARDENING_MODE_FAST)
endfunction()

# Code that stays within the reader's means: the standard library without exceptions, RTTI, a heap
# or guarded statics.
function(qps_set_reader_means target)
  qps_set_product(${target})
  target_compile_options(${target} PRIVATE -fno-exceptions -fno-rtti -fno-threadsafe-statics)
endfunction()

# The linker's version script for `rows`: "NAME", or "NAME VERSION". A script with versions cannot list
# the names without one. They are exported because the code says so; what the C++ library would export
# beside them is made local.
function(qps_version_script result rows)
  set(plain "")
  set(versioned "")
  foreach(row ${rows})
    if(row MATCHES "^(.*) (.*)$")
      string(APPEND versioned
        "${CMAKE_MATCH_2} {\n  global: ${CMAKE_MATCH_1};\n  local: _Z*;\n};\n")
    else()
      string(APPEND plain "    ${row};\n")
    endif()
  endforeach()
  if(versioned)
    set(${result} "${versioned}" PARENT_SCOPE)
  else()
    set(${result} "{\n  global:\n${plain}  local: *;\n};\n" PARENT_SCOPE)
  endif()
endfunction()

# A library that exports exactly the names in the file `exports`.
function(qps_set_plugin target exports)
  file(STRINGS ${exports} rows REGEX "^[A-Za-z]")
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${exports})
  set_target_properties(${target} PROPERTIES LINK_DEPENDS ${exports} LINKER_LANGUAGE CXX)
  qps_set_hardening(${target})
  # The reader and the library that it asks for lie side by side, also where nothing collects the
  # outputs of all folders.
  foreach(kind LIBRARY RUNTIME)
    if(NOT CMAKE_${kind}_OUTPUT_DIRECTORY)
      set_target_properties(${target} PROPERTIES
        ${kind}_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/lib)
    endif()
  endforeach()
  if(WIN32)
    list(TRANSFORM rows REPLACE " .*" "")
    list(JOIN rows "\n" lines)
    set(script ${CMAKE_CURRENT_BINARY_DIR}/${target}.def)
    file(CONFIGURE OUTPUT ${script} CONTENT "EXPORTS\n@lines@\n" @ONLY)
    target_sources(${target} PRIVATE ${script})
  else()
    qps_version_script(lines "${rows}")
    set(script ${CMAKE_CURRENT_BINARY_DIR}/${target}.map)
    file(CONFIGURE OUTPUT ${script} CONTENT "@lines@" @ONLY)
    target_link_options(${target} PRIVATE -Wl,--version-script=${script})
  endif()
endfunction()

# A program that finds the shared reader from its own place, installed and in the build tree, which
# has the same folders. As DT_RPATH: with the newer DT_RUNPATH, a library of that name in a folder of
# LD_LIBRARY_PATH would come first.
function(qps_set_program target)
  qps_set_product(${target})
  if(NOT WIN32)
    file(RELATIVE_PATH libraries ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
    set_target_properties(${target} PROPERTIES
      BUILD_WITH_INSTALL_RPATH ON INSTALL_RPATH "$ORIGIN/${libraries}")
    target_link_options(${target} PRIVATE -Wl,--disable-new-dtags)
  endif()
endfunction()

# The shared and the static reader, made of one object library. WebAssembly has the static one.
function(qps_add_reader_libraries objects)
  add_library(qpsreader_static STATIC $<TARGET_OBJECTS:${objects}>)
  set_target_properties(qpsreader_static PROPERTIES
    OUTPUT_NAME qpsreader LINKER_LANGUAGE CXX EXPORT_NAME reader_static)
  target_compile_definitions(qpsreader_static INTERFACE QPS_STATIC)
  qps_set_public_includes(qpsreader_static)
  add_library(qpsreader::reader_static ALIAS qpsreader_static)
  if(QPS_WASM)
    return()
  endif()

  add_library(qpsreader SHARED $<TARGET_OBJECTS:${objects}>)
  set_target_properties(qpsreader PROPERTIES
    VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR} EXPORT_NAME reader)
  qps_set_plugin(qpsreader ${PROJECT_SOURCE_DIR}/reader/exports.txt)
  qps_set_public_includes(qpsreader)
  add_library(qpsreader::reader ALIAS qpsreader)

  # Also where the project around this one builds only what it links with.
  add_dependencies(qpsreader zbolefio)
  add_dependencies(qpsreader_static zbolefio)
endfunction()

# qps_add_host_library(SOURCES...): the embedded host, one archive. Which reader goes with it is the
# choice of who links it: qpsreader::host takes the shared one, qpsreader::host_static the static and
# the compound-document library with it, which the host only finds when something asks the linker for
# it (library_loader_posix.cpp).
function(qps_add_host_library)
  add_library(qpshost STATIC ${ARGN})
  set_target_properties(qpshost PROPERTIES EXPORT_NAME host_archive)
  target_compile_features(qpshost INTERFACE cxx_std_20)
  target_link_libraries(qpshost PUBLIC ${CMAKE_DL_LIBS})
  qps_set_product(qpshost)
  qps_set_checked(qpshost)
  qps_set_public_includes(qpshost)

  foreach(suffix "" _static)
    add_library(qpshost_with_reader${suffix} INTERFACE)
    target_link_libraries(qpshost_with_reader${suffix} INTERFACE qpshost qpsreader${suffix})
    set_target_properties(qpshost_with_reader${suffix} PROPERTIES EXPORT_NAME host${suffix})
    add_library(qpsreader::host${suffix} ALIAS qpshost_with_reader${suffix})
  endforeach()
  target_link_libraries(qpshost_with_reader_static INTERFACE zbolefio_static)
  target_link_options(qpshost_with_reader_static INTERFACE "LINKER:-u,GetOLEInterface")
endfunction()

function(qps_set_public_includes target)
  target_include_directories(${target} INTERFACE
    $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>
    $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
endfunction()
