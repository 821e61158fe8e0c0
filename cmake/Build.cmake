# One place for what every target is compiled with.
include(CTest)
include(GNUInstallDirs)
option(VELA_BUILD_HOST "Build the program vpm" ON)
option(VELA_BENCH "Build the benchmarks" OFF)
option(VELA_FUZZ "Build the fuzz targets with clang's fuzzer" OFF)

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
# What a library exports are the namespaces that its headers mark as visible, and nothing else. Not
# with clang: it takes the mark for the declarations in that header alone, and forgets it where a
# function is defined in a source.
if(NOT CMAKE_CXX_COMPILER_ID MATCHES Clang)
  set(CMAKE_CXX_VISIBILITY_PRESET hidden)
  set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
endif()
if(NOT CMAKE_BUILD_TYPE)
  set(CMAKE_BUILD_TYPE Release)
endif()
if(NOT CMAKE_CXX_COMPILER_LAUNCHER)
  find_program(VELA_CCACHE ccache)
  if(VELA_CCACHE)
    set(CMAKE_CXX_COMPILER_LAUNCHER ${VELA_CCACHE})
  endif()
endif()

set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib)
set(CMAKE_ARCHIVE_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib)
set(CMAKE_INSTALL_RPATH $ORIGIN/../${CMAKE_INSTALL_LIBDIR})

add_compile_options(-Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror)
if(CMAKE_CXX_COMPILER_ID STREQUAL GNU AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  add_compile_options(-Wno-restrict)  # GCC 12 sees overlaps in "text" + std::string (bug 105651)
endif()
# Our own calls inside one library are not up for replacement at load time.
add_compile_options(-fno-semantic-interposition)
add_link_options(-Wl,-Bsymbolic-functions)
set(VELA_SANITIZE "" CACHE STRING "Sanitizers, as for -fsanitize=")
if(VELA_SANITIZE)
  add_compile_options(-fsanitize=${VELA_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${VELA_SANITIZE})
else()
  # Not with a sanitizer: clang leaves its run-time to the program.
  add_link_options(-Wl,--no-undefined)
endif()
