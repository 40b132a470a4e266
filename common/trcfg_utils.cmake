# The support library: linked by other programs of the instrument, C programs among them.

add_library(trcfg_utils STATIC
  trcfg_utils_child.cpp
  trcfg_utils_filesys.cpp
  trcfg_utils_io.cpp
  trcfg_utils_log.cpp
  trcfg_utils_proc.cpp
  trcfg_utils_rmtree.cpp)

# Per source, since these stand behind the options of the target: the archive must go into programs of either kind,
# and must not need the C++ run-time library, whose assertions are part of it.
get_target_property(trcfg_utils_sources trcfg_utils SOURCES)
set_source_files_properties(${trcfg_utils_sources} PROPERTIES
  COMPILE_OPTIONS "-fPIC;-fno-exceptions;-fno-rtti;-U_GLIBCXX_ASSERTIONS;-D_GLIBCXX_NO_ASSERTIONS")

# Machine code, also where the program is optimised as a whole: whoever links it may use another compiler.
set_target_properties(trcfg_utils PROPERTIES INTERPROCEDURAL_OPTIMIZATION OFF)

# A 32-bit caller must see the same struct timeval and time_t.
target_compile_definitions(trcfg_utils PUBLIC _FILE_OFFSET_BITS=64 _TIME_BITS=64)
target_include_directories(trcfg_utils
  PRIVATE ${PROJECT_SOURCE_DIR}
  INTERFACE $<BUILD_INTERFACE:${CMAKE_CURRENT_SOURCE_DIR}>)
target_link_libraries(trcfg_utils PRIVATE fm_options)

# The path from the .pc file to the prefix, so that the installed tree may be moved.
string(REGEX REPLACE "[^/]+" ".." TRCFG_UTILS_PREFIX "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
configure_file(trcfg_utils.pc.in trcfg_utils.pc @ONLY)

install(TARGETS trcfg_utils ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT trcfg_utils)
install(FILES trcfg_utils_proc.h trcfg_utils_filesys.h
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/trcfg COMPONENT trcfg_utils)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/trcfg_utils.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT trcfg_utils)
