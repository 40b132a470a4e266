# What cpack makes: the packages fileman and fileman-dev for Debian, and an archive of everything.

set(CPACK_PACKAGE_NAME fileman)
set(CPACK_PACKAGE_VENDOR "the Result File Manager authors")
set(CPACK_PACKAGE_CONTACT "the Result File Manager authors <authors@fileman.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "web page of the stored results of a test instrument")
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
set(CPACK_RESOURCE_FILE_LICENSE ${PROJECT_SOURCE_DIR}/LICENSE)
set(CPACK_STRIP_FILES OFF) # the linker has done it
# The paths of the settings are those of the installation, /etc among them.
set(CPACK_SET_DESTDIR ON)
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/OpenDirectories.cmake)

set(CPACK_COMPONENTS_ALL fileman fileman_conf trcfg_utils)
set(CPACK_COMPONENTS_GROUPING ONE_PER_GROUP)
set(CPACK_COMPONENT_FILEMAN_GROUP fileman)
set(CPACK_COMPONENT_FILEMAN_CONF_GROUP dev)
set(CPACK_COMPONENT_TRCFG_UTILS_GROUP dev)

set(debian ${PROJECT_SOURCE_DIR}/packaging/debian)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SECTION web)
# The name of the board's architecture in Debian; for this machine cpack asks dpkg.
if(FILEMAN_BOARD STREQUAL "i686")
  set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE i386)
elseif(FILEMAN_BOARD)
  set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE ${FILEMAN_BOARD})
endif()
set(CPACK_DEBIAN_FILEMAN_PACKAGE_NAME fileman)
set(CPACK_DEBIAN_FILEMAN_PACKAGE_RECOMMENDS "zip")
set(CPACK_DEBIAN_FILEMAN_PACKAGE_SUGGESTS
  "lighttpd-mod-deflate | apache2 | nginx | busybox, fcgiwrap, python3, weasyprint, libxml2-utils")
set(CPACK_COMPONENT_FILEMAN_DESCRIPTION
  "A CGI program lists the results, set-ups and screenshots that a network test
instrument has stored below /home, shows them, and delivers them as an
archive or as PDF. The package has its browser side and settings for
lighttpd, Apache, nginx, busybox and mini-httpd; it switches none of them on.")
set(CPACK_DEBIAN_FILEMAN_PACKAGE_CONTROL_EXTRA
  "${debian}/conffiles;${debian}/prerm;${debian}/postrm")
set(CPACK_DEBIAN_DEV_PACKAGE_NAME fileman-dev)
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEV_PACKAGE_RECOMMENDS "libtinyxml-dev")
set(CPACK_COMPONENT_DEV_DESCRIPTION
  "Headers, archives, pkg-config files and CMake files of the configuration store
and of the support library, for other programs of the instrument.")

# The Debian policy demands the licence and the list of changes in every package. The list is packed without a date.
foreach(package fileman fileman-dev)
  set(component fileman)
  if(package STREQUAL "fileman-dev")
    set(component fileman_conf)
  endif()
  if(CMAKE_INSTALL_PREFIX STREQUAL "/usr")
    set(changelog ${PROJECT_BINARY_DIR}/papers/${package}/changelog.gz)
    file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/papers/${package})
    execute_process(COMMAND gzip -9nc ${debian}/changelog OUTPUT_FILE ${changelog})
    install(FILES ${debian}/copyright ${changelog} DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package}
      COMPONENT ${component} ${FILEMAN_LIBRARIES_UNASKED})
  endif()
endforeach()
if(CMAKE_INSTALL_PREFIX STREQUAL "/usr")
  install(FILES ${debian}/fileman.lintian-overrides DESTINATION share/lintian/overrides RENAME fileman COMPONENT fileman)
endif()
include(CPack)
