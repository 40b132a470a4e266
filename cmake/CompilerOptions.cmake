# Compiler and linker options for our own code. They belong to our directories, so that a program that links our
# libraries keeps its own options.

# A release is optimised with -O3, CMake's own level for the build type. Distributions replace it by
# CMAKE_CXX_FLAGS_RELEASE; so it is not an option below, which would come after theirs.
add_compile_options(
  -Wall -Wextra -Wshadow -Wconversion
  $<$<BOOL:${FILEMAN_WERROR}>:-Werror>
  -fstack-protector-strong -ffunction-sections -fdata-sections
  $<$<CONFIG:Release>:-U_FORTIFY_SOURCE> $<$<CONFIG:Release>:-D_FORTIFY_SOURCE=2>
  # The same sources give the same bytes in every directory.
  $<$<CONFIG:Release>:-ffile-prefix-map=${PROJECT_SOURCE_DIR}=.> $<$<CONFIG:Release>:-ffile-prefix-map=${PROJECT_BINARY_DIR}=build>)
add_link_options(-Wl,--gc-sections -Wl,-z,relro -Wl,-z,now -Wl,-z,noexecstack)

if(FILEMAN_SANITIZE)
  add_compile_options(-O1 -fsanitize=${FILEMAN_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${FILEMAN_SANITIZE})
  add_compile_definitions(FILEMAN_SANITIZED)
endif()

if(FILEMAN_STATIC)
  # A position-independent static program starts slower (it relocates itself) and is larger: measured in docs.
  add_compile_options($<$<NOT:$<BOOL:$<TARGET_PROPERTY:POSITION_INDEPENDENT_CODE>>>:-fno-pie>)
  add_link_options(-static -no-pie)
else()
  set(CMAKE_POSITION_INDEPENDENT_CODE ON)
  add_link_options($<$<STREQUAL:$<TARGET_PROPERTY:TYPE>,EXECUTABLE>:-pie>)
endif()

# Options that callers of our libraries must share: 64-bit sizes and times also on 32-bit boards, for results above 2 GiB
# and dates after 2038.
add_library(fm_options INTERFACE)
target_compile_definitions(fm_options INTERFACE _FILE_OFFSET_BITS=64 _TIME_BITS=64)
