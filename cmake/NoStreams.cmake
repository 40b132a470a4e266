# Tests whether cgi/NoStreams.cpp can replace the stream initialiser of the C++ library: only in a static program, and only
# if compiler and library accept it. Otherwise the option turns itself off, and the program starts a little slower.

# std::cin, cout, cerr and clog: a program that mentions one of them does not link.
set(FILEMAN_REFUSE_STREAMS)
foreach(stream IN ITEMS 3cin 4cout 4cerr 4clog)
  list(APPEND FILEMAN_REFUSE_STREAMS -Wl,--wrap=_ZSt${stream})
endforeach()

if(FILEMAN_NO_STREAMS AND NOT FILEMAN_STATIC)
  set(FILEMAN_NO_STREAMS OFF)
endif()
if(FILEMAN_NO_STREAMS)
  file(WRITE ${PROJECT_BINARY_DIR}/UsesStreamHeader.cpp "#include <iostream>\nint main() { return 0; }\n")
  try_compile(FILEMAN_STREAMS_CAN_GO ${PROJECT_BINARY_DIR}/no-streams
    SOURCES ${PROJECT_BINARY_DIR}/UsesStreamHeader.cpp ${PROJECT_SOURCE_DIR}/cgi/NoStreams.cpp
    LINK_OPTIONS -static -no-pie ${FILEMAN_REFUSE_STREAMS}
    CXX_STANDARD 17)
  if(NOT FILEMAN_STREAMS_CAN_GO)
    message(STATUS "The C++ streams stay in: this compiler or library does not let them be replaced")
    set(FILEMAN_NO_STREAMS OFF)
  endif()
endif()
