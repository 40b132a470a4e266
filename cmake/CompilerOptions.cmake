# What every target of ours is compiled and linked with: `fm_options`.

add_library(fm_options INTERFACE)

# 64-bit sizes and times on 32-bit boards too: results above 2 GiB, and dates beyond 2038.
target_compile_definitions(fm_options INTERFACE _FILE_OFFSET_BITS=64 _TIME_BITS=64)

target_compile_options(fm_options INTERFACE
  -Wall -Wextra -Wshadow -Wconversion
  $<$<BOOL:${FILEMAN_WERROR}>:-Werror>
  -fstack-protector-strong -ffunction-sections -fdata-sections
  $<$<CONFIG:Release>:-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2>)
target_link_options(fm_options INTERFACE -Wl,--gc-sections -Wl,-z,relro -Wl,-z,now -Wl,-z,noexecstack)

if(FILEMAN_SANITIZE)
  target_compile_options(fm_options INTERFACE
    -fsanitize=${FILEMAN_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(fm_options INTERFACE -fsanitize=${FILEMAN_SANITIZE})
endif()

if(FILEMAN_STATIC)
  # A position-independent static program starts slower (it relocates itself) and is larger: measured in docs.
  target_compile_options(fm_options INTERFACE -fno-pie)
  target_link_options(fm_options INTERFACE -static -no-pie)
else()
  set(CMAKE_POSITION_INDEPENDENT_CODE ON)
  target_compile_options(fm_options INTERFACE -fPIE)
  target_link_options(fm_options INTERFACE $<$<STREQUAL:$<TARGET_PROPERTY:TYPE>,EXECUTABLE>:-pie>)
endif()
