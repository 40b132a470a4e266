# Toolchain of the presets i686, armhf and arm64: Debian's cross compiler, and the board's libraries from the private
# folder that scripts/board-packages fills. FILEMAN_BOARD is the preset's name.

set(CMAKE_TRY_COMPILE_PLATFORM_VARIABLES FILEMAN_BOARD)
set(board_triplet_i686 i686-linux-gnu)
set(board_triplet_armhf arm-linux-gnueabihf)
set(board_triplet_arm64 aarch64-linux-gnu)
set(board_triplet ${board_triplet_${FILEMAN_BOARD}})
if(NOT board_triplet)
  message(FATAL_ERROR "FILEMAN_BOARD is \"${FILEMAN_BOARD}\": no such board")
endif()
set(board_root ${CMAKE_CURRENT_LIST_DIR}/../build/boards/${FILEMAN_BOARD})
if(NOT IS_DIRECTORY ${board_root})
  message(FATAL_ERROR "The board's libraries are missing: run scripts/board-packages ${FILEMAN_BOARD} first")
endif()
get_filename_component(board_root ${board_root} REALPATH)

set(CMAKE_SYSTEM_NAME Linux)
string(REGEX MATCH "^[^-]+" CMAKE_SYSTEM_PROCESSOR ${board_triplet})
set(CMAKE_C_COMPILER ${board_triplet}-gcc)
set(CMAKE_CXX_COMPILER ${board_triplet}-g++)
set(CMAKE_LIBRARY_ARCHITECTURE ${board_triplet})
set(CMAKE_FIND_ROOT_PATH ${board_root} /usr/${board_triplet})
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
# The versions are also those of the board's libraries.
set(ENV{PKG_CONFIG_LIBDIR} ${board_root}/usr/lib/${board_triplet}/pkgconfig:${board_root}/usr/share/pkgconfig)
