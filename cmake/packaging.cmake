# Debian packages of an installed tree: cpack -G DEB in a build configured with
# -DCMAKE_INSTALL_PREFIX=/usr. The libraries then go where Debian looks for them.
#   zorpel          the programs, manual pages and completions
#   libzorpel1      both shared libraries
#   libzorpel-dev   headers, static library, what CMake and pkg-config need
#   python3-zorpel  the Python package
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME zorpel)
set(CPACK_PACKAGE_VENDOR "the ZORPEL authors")
set(CPACK_PACKAGE_CONTACT "ZORPEL authors <zorpel@users.noreply.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "") # each package has its own
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_COMPONENTS_ALL tool library development)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(method "by multilevel recursive bisection: a hypergraph is coarsened by merging
vertices, the smallest one is bisected, and the bisection is refined back to
the whole; and so on for each half.")
set(purpose "divides the vertices of a hypergraph into parts of about equal
weight such that few hyperedges join several parts,")

function(zorpel_package component name section summary text)
  string(TOUPPER ${component} key)
  set(CPACK_DEBIAN_${key}_PACKAGE_NAME ${name} PARENT_SCOPE)
  set(CPACK_DEBIAN_${key}_PACKAGE_SECTION ${section} PARENT_SCOPE)
  set(CPACK_DEBIAN_${key}_DESCRIPTION "${summary}\n${text}" PARENT_SCOPE)
  install(FILES ${PROJECT_SOURCE_DIR}/cmake/debian/copyright
    ${PROJECT_SOURCE_DIR}/cmake/debian/changelog
    DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${name} COMPONENT ${component} EXCLUDE_FROM_ALL)
  if(EXISTS ${PROJECT_SOURCE_DIR}/cmake/debian/${name}.lintian-overrides)
    install(FILES ${PROJECT_SOURCE_DIR}/cmake/debian/${name}.lintian-overrides
      DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides RENAME ${name}
      COMPONENT ${component} EXCLUDE_FROM_ALL)
  endif()
endfunction()

zorpel_package(tool zorpel science "partition hypergraphs by multilevel recursive bisection"
"zorpel ${purpose}
${method}
.
zorpelx is the program for daily use: it reads compressed files, has named
options, exit statuses and JSON, verifies partitions and finds what is wrong
in hypergraph files.")
zorpel_package(library libzorpel1 libs "hypergraph partitioning - shared libraries"
"libzorpel ${purpose}
${method}
.
libzorpelx is the safe way to the same engine: it checks all that it is given,
returns a status, and works in processes of its own.")
zorpel_package(development libzorpel-dev libdevel "hypergraph partitioning - development files"
"libzorpel ${purpose}
${method}
.
This package holds what is needed to build programs with libzorpel and
libzorpelx: headers for C and C++, the static library of the engine, and the
files by which CMake and pkg-config find them.")
set(CPACK_DEBIAN_TOOL_PACKAGE_DEPENDS "libzorpel1 (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "libzorpel1 (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SHLIBDEPS OFF)

set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA ${CMAKE_CURRENT_LIST_DIR}/debian/triggers)
# The programs need the libraries of this very build, which is not installed yet.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS
  ${PROJECT_BINARY_DIR}/src ${PROJECT_BINARY_DIR}/zorpelx/lib)

if(ZORPEL_X AND EXISTS ${PROJECT_SOURCE_DIR}/zorpelx/python/CMakeLists.txt)
  list(APPEND CPACK_COMPONENTS_ALL python)
  zorpel_package(python python3-zorpel python "hypergraph partitioning - Python package"
"zorpel ${purpose}
${method}
.
The Python package takes hypergraphs as lists, NumPy arrays, SciPy matrices
and files, partitions and evaluates them, and never ends its caller.")
  set(CPACK_DEBIAN_PYTHON_PACKAGE_ARCHITECTURE all)
  set(CPACK_DEBIAN_PYTHON_PACKAGE_SHLIBDEPS OFF)
  set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS "python3:any, libzorpel1 (>= ${PROJECT_VERSION})")
  set(CPACK_DEBIAN_PYTHON_PACKAGE_SUGGESTS "python3-numpy, python3-scipy")
endif()

set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/compress_docs.cmake)
set(CPACK_POST_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/finish_packages.cmake)
include(CPack)
