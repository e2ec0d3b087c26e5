# What an installation holds, in components: runtime (the library), development (headers, link,
# tdms.pc and the CMake package) and tool (the program, its page and its completion). The Python
# package is the component python, which only `cmake --install --component python` and the Debian
# package install: elsewhere pip does, which knows where the interpreter looks.
if(NOT TDMS_INSTALL)
  return()
endif()
include(CMakePackageConfigHelpers)

set(TDMS_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/tdms)
set(TDMS_GENERATED ${CMAKE_CURRENT_BINARY_DIR}/install)

install(TARGETS tdms EXPORT tdmsTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT development)
install(FILES include/tdms.h include/tdms.hpp DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
  COMPONENT development)
install(DIRECTORY python/tdms DESTINATION ${TDMS_PYTHON_DIR} COMPONENT python EXCLUDE_FROM_ALL
  FILES_MATCHING PATTERN "*.py" PATTERN py.typed PATTERN __pycache__ EXCLUDE)

# The CMake package and tdms.pc locate files relative to themselves, so an installation is relocatable.
install(EXPORT tdmsTargets NAMESPACE tdms:: DESTINATION ${TDMS_CMAKE_DIR} COMPONENT development)
configure_package_config_file(cmake/tdmsConfig.cmake.in ${TDMS_GENERATED}/tdmsConfig.cmake
  INSTALL_DESTINATION ${TDMS_CMAKE_DIR})
write_basic_package_version_file(${TDMS_GENERATED}/tdmsConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${TDMS_GENERATED}/tdmsConfig.cmake ${TDMS_GENERATED}/tdmsConfigVersion.cmake
  DESTINATION ${TDMS_CMAKE_DIR} COMPONENT development)

# A path as tdms.pc writes it: relative to the prefix unless it is absolute.
function(tdms_pc_path variable path)
  if(NOT IS_ABSOLUTE ${path})
    set(path "\${prefix}/${path}")
  endif()
  set(${variable} ${path} PARENT_SCOPE)
endfunction()
tdms_pc_path(TDMS_PC_INCLUDEDIR ${CMAKE_INSTALL_INCLUDEDIR})
tdms_pc_path(TDMS_PC_LIBDIR ${CMAKE_INSTALL_LIBDIR})
if(IS_ABSOLUTE ${CMAKE_INSTALL_LIBDIR})
  set(TDMS_PC_PREFIX ${CMAKE_INSTALL_PREFIX})
else()
  file(RELATIVE_PATH TDMS_PC_PREFIX /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
  string(REGEX REPLACE "/$" "" TDMS_PC_PREFIX "\${pcfiledir}/${TDMS_PC_PREFIX}")
endif()
configure_file(cmake/tdms.pc.in ${TDMS_GENERATED}/tdms.pc @ONLY)
install(FILES ${TDMS_GENERATED}/tdms.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
  COMPONENT development)

if(TDMS_BUILD_TOOLS)
  install(TARGETS tdms_tool DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tool)
  install(FILES tools/completion/tdms
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT tool)
  # Without the name and the time of the file, the same page always gives the same bytes.
  find_program(TDMS_GZIP gzip REQUIRED)
  set(page ${CMAKE_CURRENT_SOURCE_DIR}/docs/tdms.1)
  add_custom_command(OUTPUT ${TDMS_GENERATED}/tdms.1.gz
    COMMAND ${TDMS_GZIP} -9nc ${page} > ${TDMS_GENERATED}/tdms.1.gz
    DEPENDS ${page} VERBATIM)
  add_custom_target(tdms_manual_page ALL DEPENDS ${TDMS_GENERATED}/tdms.1.gz)
  install(FILES ${TDMS_GENERATED}/tdms.1.gz DESTINATION ${CMAKE_INSTALL_MANDIR}/man1
    COMPONENT tool)
endif()
