# What "cmake --install" installs. Components: fileman (the program, its browser side and its documents), fileman_conf
# and trcfg_utils (the libraries; their own directories install them).

set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME fileman)
set(fileman_data ${CMAKE_INSTALL_DATADIR}/fileman)
set(fileman_programs ${CMAKE_INSTALL_LIBEXECDIR}/fileman)

install(TARGETS fileman.cgi RUNTIME DESTINATION ${fileman_programs}/cgi-bin)
install(TARGETS fileman-check RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(PROGRAMS tools/htm2pdf DESTINATION ${fileman_programs})

# The browser side, with the program in it for servers that need programs below their document root.
set(fileman_www ${PROJECT_SOURCE_DIR}/build/www)
install(CODE "if(NOT IS_DIRECTORY \"${fileman_www}\")
  message(FATAL_ERROR \"The browser side is missing: run scripts/build-web first\")
endif()")
install(DIRECTORY ${fileman_www}/ DESTINATION ${fileman_data}/www)

# fileman_settings(FILE DESTINATION NAME [PROGRAMS]): installs settings, with the paths of this installation instead of
# those of the instrument.
function(fileman_settings file destination name)
  file(READ packaging/${file} text)
  string(REPLACE /usr/local/ktb/www ${CMAKE_INSTALL_FULL_DATADIR}/fileman/www text "${text}")
  string(REPLACE /usr/local/ktb/cgi-bin ${CMAKE_INSTALL_FULL_LIBEXECDIR}/fileman/cgi-bin text "${text}")
  string(REPLACE /usr/local/ktb/lighttpd ${CMAKE_INSTALL_FULL_DATADIR}/fileman/servers/lighttpd text "${text}")
  string(REPLACE /usr/local/ktb/nginx ${CMAKE_INSTALL_FULL_DATADIR}/fileman/servers/nginx text "${text}")
  set(copy ${PROJECT_BINARY_DIR}/settings/${file})
  file(WRITE ${copy} "${text}")
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS packaging/${file})
  set(kind FILES)
  if(ARGN)
    set(kind ${ARGN})
  endif()
  install(${kind} ${copy} DESTINATION ${destination} RENAME ${name})
endfunction()

set(servers ${fileman_data}/servers)
fileman_settings(strict-answers ${fileman_data}/www/cgi-bin fileman.cgi PROGRAMS)
fileman_settings(lighttpd/fileman.conf ${servers}/lighttpd fileman.conf)
fileman_settings(lighttpd/site.conf ${servers}/lighttpd site.conf)
fileman_settings(apache/fileman.conf ${servers}/apache fileman.conf)
fileman_settings(nginx/fileman.conf ${servers}/nginx fileman.conf)
fileman_settings(nginx/site ${servers}/nginx site)
fileman_settings(nginx/fcgiwrap ${servers}/nginx fcgiwrap)
fileman_settings(busybox/httpd.conf ${servers}/busybox httpd.conf)
fileman_settings(mini-httpd/mini-httpd.conf ${servers}/mini-httpd mini-httpd.conf)
fileman_settings(mini-httpd/strict-answers ${servers}/mini-httpd strict-answers PROGRAMS)
fileman_settings(uhttpd/uhttpd ${servers}/uhttpd uhttpd)
# A distribution keeps settings where its own commands find them and switch them on.
if(CMAKE_INSTALL_PREFIX STREQUAL "/usr")
  fileman_settings(lighttpd/site.conf /etc/lighttpd/conf-available 50-fileman.conf)
  fileman_settings(apache/fileman.conf /etc/apache2/conf-available fileman.conf)
endif()

# Manual pages; a distribution packs them, without a date.
foreach(page fileman-check.1 fileman.conf.5 fileman.cgi.8)
  string(REGEX MATCH "[0-9]$" chapter ${page})
  set(file ${PROJECT_SOURCE_DIR}/man/${page})
  if(CMAKE_INSTALL_PREFIX STREQUAL "/usr")
    file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/man)
    execute_process(COMMAND gzip -9nc ${file} OUTPUT_FILE ${PROJECT_BINARY_DIR}/man/${page}.gz)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${file})
    set(file ${PROJECT_BINARY_DIR}/man/${page}.gz)
  endif()
  install(FILES ${file} DESTINATION ${CMAKE_INSTALL_MANDIR}/man${chapter})
endforeach()

install(FILES docs/configuration.rnc docs/configuration.rng DESTINATION ${fileman_data})
install(FILES CHANGELOG.md LICENSE README.md SECURITY.md THIRD-PARTY.md ${PROJECT_BINARY_DIR}/fileman.cdx.json
  DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY docs/ DESTINATION ${CMAKE_INSTALL_DOCDIR}/docs FILES_MATCHING PATTERN *.md
  PATTERN screenshots EXCLUDE PATTERN examples EXCLUDE)
install(FILES sample/result-config-ktd.xml docs/examples/configuration-store.cpp docs/examples/configuration-store.xml
  docs/examples/support-library.c docs/examples/CMakeLists.txt DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples)

# For other CMake projects: find_package(fileman) gives fileman::fileman_conf and fileman::trcfg_utils.
include(CMakePackageConfigHelpers)
set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/fileman)
configure_package_config_file(cmake/fileman-config.cmake.in ${PROJECT_BINARY_DIR}/fileman-config.cmake
  INSTALL_DESTINATION ${package_dir} PATH_VARS CMAKE_INSTALL_LIBDIR CMAKE_INSTALL_INCLUDEDIR)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/fileman-config-version.cmake COMPATIBILITY SameMajorVersion)
foreach(component fileman_conf trcfg_utils)
  install(FILES ${PROJECT_BINARY_DIR}/fileman-config.cmake ${PROJECT_BINARY_DIR}/fileman-config-version.cmake
    DESTINATION ${package_dir} COMPONENT ${component} ${FILEMAN_LIBRARIES_UNASKED})
endforeach()
