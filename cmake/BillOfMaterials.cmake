# The software bill of materials: the list of the components of fileman.cgi and its browser side, in the format
# CycloneDX 1.5. Code that finds a component adds it to the list; the last line of the CMakeLists.txt in the root
# writes the list.

# Adds the part NAME with its licence (an expression of SPDX) and its version; an empty version is left out.
function(fileman_component name version licence)
  string(REPLACE "+" "%2B" encoded "${name}")
  set(part "{ \"type\": \"library\", \"name\": \"${name}\",")
  if(version)
    string(APPEND part " \"version\": \"${version}\", \"purl\": \"pkg:generic/${encoded}@${version}\",")
  endif()
  string(APPEND part " \"licenses\": [ { \"expression\": \"${licence}\" } ] }")
  set_property(GLOBAL APPEND PROPERTY FILEMAN_COMPONENTS "${part}")
endfunction()

# Sets OUT to the version that pkg-config knows. It is empty if there is no such file, as for some boards.
function(fileman_pkg_version out package)
  find_package(PkgConfig QUIET)
  if(PKG_CONFIG_FOUND)
    pkg_check_modules(FILEMAN_PKG_${package} QUIET ${package})
  endif()
  set(${out} "${FILEMAN_PKG_${package}_VERSION}" PARENT_SCOPE)
endfunction()

# Adds the libraries of the compiler and the system, with the versions that the compiler reports.
function(fileman_toolchain_components)
  file(WRITE ${PROJECT_BINARY_DIR}/LibraryVersions.cpp "#include <features.h>\nVersion __GLIBC__ __GLIBC_MINOR__\n")
  execute_process(COMMAND ${CMAKE_CXX_COMPILER} -E -P ${PROJECT_BINARY_DIR}/LibraryVersions.cpp
    OUTPUT_VARIABLE preprocessed ERROR_QUIET)
  if(preprocessed MATCHES "Version ([0-9]+) ([0-9]+)")
    fileman_component(glibc ${CMAKE_MATCH_1}.${CMAKE_MATCH_2} LGPL-2.1-or-later)
  endif()
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    fileman_component(libstdc++ ${CMAKE_CXX_COMPILER_VERSION} "GPL-3.0-or-later WITH GCC-exception-3.1")
  endif()
endfunction()

# Adds the parts of the browser side: the names in web/package.json, with the versions in web/package-lock.json.
function(fileman_browser_components)
  file(READ ${PROJECT_SOURCE_DIR}/web/package.json package)
  file(READ ${PROJECT_SOURCE_DIR}/web/package-lock.json lock)
  string(JSON count LENGTH "${package}" dependencies)
  math(EXPR last "${count} - 1")
  foreach(i RANGE ${last})
    string(JSON name MEMBER "${package}" dependencies ${i})
    string(JSON version GET "${lock}" packages node_modules/${name} version)
    string(JSON licence GET "${lock}" packages node_modules/${name} license)
    fileman_component(${name} ${version} ${licence})
  endforeach()
endfunction()

# Writes fileman.cdx.json into the build directory. It has no date and no random number, so that the same sources give
# the same bytes.
function(fileman_write_components)
  fileman_toolchain_components()
  fileman_browser_components()
  get_property(parts GLOBAL PROPERTY FILEMAN_COMPONENTS)
  list(SORT parts)
  list(JOIN parts ",\n    " FILEMAN_PARTS)
  configure_file(${PROJECT_SOURCE_DIR}/cmake/fileman.cdx.json.in ${PROJECT_BINARY_DIR}/fileman.cdx.json @ONLY)
endfunction()
