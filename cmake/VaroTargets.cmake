# How every target of the project is made: one language level, one set of warnings, one include root.

option(VARO_WERROR "Treat warnings as errors" ON)
option(VARO_SANITIZE "Build with the address and undefined-behaviour sanitizers" OFF)

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
  set(CMAKE_BUILD_TYPE Release CACHE STRING "Build type" FORCE)
endif()

find_program(CCACHE_PROGRAM ccache)
if(CCACHE_PROGRAM)
  set(CMAKE_CXX_COMPILER_LAUNCHER "${CCACHE_PROGRAM}")
endif()

function(varo_compile_options target)
  target_compile_features(${target} PUBLIC cxx_std_20)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow -Wconversion
                                           -Wno-sign-conversion)
  # Nobody replaces a function of ours at load time, so calls within a file may be inlined.
  target_compile_options(${target} PRIVATE -fno-semantic-interposition)
  if(VARO_WERROR)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
  if(VARO_SANITIZE)
    target_compile_options(${target} PRIVATE -fsanitize=address,undefined
                                             -fno-sanitize-recover=undefined
                                             -fno-omit-frame-pointer)
    target_link_options(${target} PRIVATE -fsanitize=address,undefined)
    if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
      # Sees uses in instrumented code that are not there.
      target_compile_options(${target} PRIVATE -Wno-maybe-uninitialized)
    endif()
  endif()
endfunction()

# varo_room(NAME ROOM): makes the headers of the folder ROOM below src visible to the target NAME and
# to those that link it, by their path below src, and no other headers.
function(varo_room name room)
  string(REPLACE "/" "_" folder "${room}")
  set(root "${PROJECT_BINARY_DIR}/headers/${folder}")
  cmake_path(GET room PARENT_PATH above)
  file(MAKE_DIRECTORY "${root}/${above}")
  file(CREATE_LINK "${PROJECT_SOURCE_DIR}/src/${room}" "${root}/${room}" SYMBOLIC)
  get_target_property(type ${name} TYPE)
  set(scope PUBLIC)
  if(type STREQUAL "INTERFACE_LIBRARY")
    set(scope INTERFACE)
  endif()
  target_include_directories(${name} ${scope} "$<BUILD_INTERFACE:${root}>")
endfunction()

# varo_library(NAME [ROOM ...] SOURCES ... LINKS ...): a static library. ROOM is its folder below src.
# Its code can include the headers of LINKS, and of what these link, and no others.
function(varo_library name)
  cmake_parse_arguments(ARG "" "ROOM" "SOURCES;LINKS" ${ARGN})
  add_library(${name} STATIC ${ARG_SOURCES})
  if(ARG_ROOM)
    varo_room(${name} ${ARG_ROOM})
  endif()
  target_link_libraries(${name} PUBLIC ${ARG_LINKS})
  varo_compile_options(${name})
endfunction()

# varo_executable(NAME SOURCES ... LINKS ...): a program.
function(varo_executable name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LINKS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE ${ARG_LINKS})
  varo_compile_options(${name})
endfunction()

# varo_test(NAME SOURCES ... LINKS ...): a GoogleTest program, run test by test by ctest without a
# display.
function(varo_test name)
  cmake_parse_arguments(ARG "" "PLATFORM" "SOURCES;LINKS" ${ARGN})
  if(NOT ARG_PLATFORM)
    set(ARG_PLATFORM offscreen)
  endif()
  add_executable(${name} ${ARG_SOURCES})
  target_include_directories(${name} PRIVATE "${PROJECT_SOURCE_DIR}/tests")
  target_link_libraries(${name} PRIVATE ${ARG_LINKS} GTest::gtest)
  varo_compile_options(${name})
  gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST
    PROPERTIES ENVIRONMENT "QT_QPA_PLATFORM=${ARG_PLATFORM}")
endfunction()
