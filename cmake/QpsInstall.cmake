# SPDX-License-Identifier: MIT
# What `cmake --install` lays down: libraries, headers, the CMake package `qpsreader` and pkg-config
# files. The tree may be moved as a whole afterwards.
include(CMakePackageConfigHelpers)

install(TARGETS qpsreader qpsreader_static qpshost qpshost_with_reader qpshost_with_reader_static
  zbolefio zbolefio_static EXPORT qpsreaderTargets)
install(FILES ${PROJECT_SOURCE_DIR}/LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/qpsreader
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})

set(packageFolder ${CMAKE_INSTALL_LIBDIR}/cmake/qpsreader)
install(EXPORT qpsreaderTargets NAMESPACE qpsreader:: DESTINATION ${packageFolder})
configure_package_config_file(cmake/qpsreaderConfig.cmake.in
  ${PROJECT_BINARY_DIR}/qpsreaderConfig.cmake INSTALL_DESTINATION ${packageFolder}
  NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/qpsreaderConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/qpsreaderConfig.cmake
  ${PROJECT_BINARY_DIR}/qpsreaderConfigVersion.cmake DESTINATION ${packageFolder})

file(RELATIVE_PATH QPS_PC_PREFIX ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
# From the prefix too where the folders were given as absolute paths.
file(RELATIVE_PATH QPS_PC_LIBDIR ${CMAKE_INSTALL_PREFIX} ${CMAKE_INSTALL_FULL_LIBDIR})
file(RELATIVE_PATH QPS_PC_INCLUDEDIR ${CMAKE_INSTALL_PREFIX} ${CMAKE_INSTALL_FULL_INCLUDEDIR})
string(REGEX REPLACE "/$" "" QPS_PC_PREFIX ${QPS_PC_PREFIX})
foreach(name qpsreader qpshost)
  configure_file(cmake/${name}.pc.in ${PROJECT_BINARY_DIR}/${name}.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/${name}.pc
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endforeach()

# The manual pages of section 3 are made of the headers, where there is a Python.
find_program(QPS_PYTHON3 NAMES python3)
if(QPS_PYTHON3 AND NOT WIN32)
  set(pages ${PROJECT_BINARY_DIR}/man3)
  set(maker ${PROJECT_SOURCE_DIR}/docs/reference/man_pages.py)
  file(GLOB headers CONFIGURE_DEPENDS include/qpsreader/*.h)
  add_custom_command(OUTPUT ${pages}.stamp
    COMMAND ${QPS_PYTHON3} ${maker} ${PROJECT_SOURCE_DIR}/include ${pages}
    COMMAND ${CMAKE_COMMAND} -E touch ${pages}.stamp
    DEPENDS ${maker} ${headers} VERBATIM)
  add_custom_target(qps_man_pages ALL DEPENDS ${pages}.stamp)
  install(DIRECTORY ${pages} DESTINATION ${CMAKE_INSTALL_MANDIR})
endif()
