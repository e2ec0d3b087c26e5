# Debian packages by cpack: libtdms1, libtdms-dev, tdms-tools and python3-tdms, one for each component
# of the installation. Configure with -DCMAKE_INSTALL_PREFIX=/usr to have the library in the directory of
# its architecture.
if(NOT PROJECT_IS_TOP_LEVEL OR NOT TDMS_INSTALL OR NOT TDMS_BUILD_TOOLS)
  return()
endif()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME tdms)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "The tdms authors <authors@tdms.example>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")  # each description has a first line of its own
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL runtime development tool python)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_BINARY_DIR})
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(TDMS_SAME_VERSION "libtdms${PROJECT_VERSION_MAJOR} (= ${PROJECT_VERSION}-1)")

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libtdms${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${CMAKE_CURRENT_LIST_DIR}/debian/triggers)
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION "TDMS measurement files: library
A library with a C interface that reads and writes measurement files in the
TDMS format: a tree of groups and channels, with typed properties and values.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libtdms-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS ${TDMS_SAME_VERSION})
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION "TDMS measurement files: development files
The headers of the TDMS library for C and C++, what pkg-config and CMake need
to find it, and examples.")

set(CPACK_DEBIAN_TOOL_PACKAGE_NAME tdms-tools)
set(CPACK_DEBIAN_TOOL_PACKAGE_SECTION science)
set(CPACK_DEBIAN_TOOL_PACKAGE_DEPENDS ${TDMS_SAME_VERSION})
set(CPACK_DEBIAN_TOOL_PACKAGE_RECOMMENDS gnuplot-nox)
set(CPACK_DEBIAN_TOOL_DESCRIPTION "TDMS measurement files: command-line tool
The program tdms shows what a measurement file in the TDMS format holds, writes
values as CSV or HDF5, draws channels, compares and checks files, and recovers
what is intact of damaged ones.")

set(CPACK_DEBIAN_PYTHON_PACKAGE_NAME python3-tdms)
set(CPACK_DEBIAN_PYTHON_PACKAGE_SECTION python)
set(CPACK_DEBIAN_PYTHON_PACKAGE_ARCHITECTURE all)
set(CPACK_DEBIAN_PYTHON_PACKAGE_SHLIBDEPS OFF)
set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS
  "libtdms${PROJECT_VERSION_MAJOR} (>= ${PROJECT_VERSION}), python3 (>= 3.9), python3-numpy")
set(CPACK_DEBIAN_PYTHON_PACKAGE_SUGGESTS python3-pandas)
set(CPACK_DEBIAN_PYTHON_PACKAGE_CONTROL_EXTRA
  ${CMAKE_CURRENT_LIST_DIR}/debian/python/postinst ${CMAKE_CURRENT_LIST_DIR}/debian/python/prerm)
set(CPACK_DEBIAN_PYTHON_DESCRIPTION "TDMS measurement files: package for Python
The package tdms reads and writes measurement files in the TDMS format:
channels as NumPy arrays, properties as dicts, and data frames where pandas is
installed.")

# Guides, and examples that build and run with what the package holds.
function(tdms_install_documents component package)
  set(folder ${CMAKE_INSTALL_DATADIR}/doc/${package})
  foreach(page ${TDMS_${component}_PAGES})
    # Installed, the examples are beside the pages.
    file(READ docs/${page}.md text)
    string(REPLACE "](../examples/" "](examples/" text "${text}")
    string(REPLACE "](../include/" "](/usr/include/" text "${text}")
    # A page that the package does not have is named instead of linked.
    foreach(other guide languages performance)
      if(NOT other IN_LIST TDMS_${component}_PAGES)
        string(REGEX REPLACE "\\[([^]]*)\\]\\(${other}\\.md[^)]*\\)" "\\1 (`docs/${other}.md`, in the source)"
          text "${text}")
      endif()
    endforeach()
    file(WRITE ${TDMS_GENERATED}/${package}/${page}.md "${text}")
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS docs/${page}.md)
    install(FILES ${TDMS_GENERATED}/${package}/${page}.md DESTINATION ${folder}
      COMPONENT ${component} EXCLUDE_FROM_ALL)
  endforeach()
  foreach(example ${TDMS_${component}_EXAMPLES})
    install(DIRECTORY examples/${example} DESTINATION ${folder}/examples
      COMPONENT ${component} EXCLUDE_FROM_ALL PATTERN __pycache__ EXCLUDE PATTERN *_test.py EXCLUDE
      REGEX "/programs/CMakeLists\\.txt$" EXCLUDE)
  endforeach()
endfunction()
set(TDMS_development_PAGES guide languages)
set(TDMS_development_EXAMPLES installed/c installed/cpp programs)
set(TDMS_python_PAGES languages cluster)
set(TDMS_python_EXAMPLES installed/python/ cluster)
tdms_install_documents(development libtdms-dev)
install(FILES examples/record.c examples/summary.c
  DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/libtdms-dev/examples COMPONENT development EXCLUDE_FROM_ALL)
tdms_install_documents(python python3-tdms)

# Every package carries its copyright and its changes.
file(READ LICENSE license)
string(REGEX MATCH "Copyright[^\n]*" TDMS_COPYRIGHT "${license}")
string(REGEX REPLACE "^.*Copyright[^\n]*\n+" "" license "${license}")
string(STRIP "${license}" license)
string(REPLACE "\n\n" "\n.\n" license "${license}")
string(REPLACE "\n" "\n " TDMS_LICENSE " ${license}")
string(REGEX REPLACE "Copyright (\\([cC]\\) )?" "" TDMS_COPYRIGHT "${TDMS_COPYRIGHT}")
configure_file(cmake/debian/copyright.in ${TDMS_GENERATED}/copyright @ONLY)
configure_file(cmake/debian/changelog.in ${TDMS_GENERATED}/changelog.Debian @ONLY)
execute_process(COMMAND ${TDMS_GZIP} -9nf ${TDMS_GENERATED}/changelog.Debian
  COMMAND_ERROR_IS_FATAL ANY)
foreach(component ${CPACK_COMPONENTS_ALL})
  string(TOUPPER ${component} upper)
  install(FILES ${TDMS_GENERATED}/copyright ${TDMS_GENERATED}/changelog.Debian.gz
    DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${CPACK_DEBIAN_${upper}_PACKAGE_NAME}
    COMPONENT ${component} EXCLUDE_FROM_ALL)
endforeach()

include(CPack)
