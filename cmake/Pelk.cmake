# The build rules that every target shares: language, warnings, arithmetic, visibility, sanitizers.

option(PELK_BENCH "Build the benchmark programs" OFF)
option(PELK_FUZZ "Make fuzzers of the targets in fuzz/; needs clang" OFF)
set(PELK_ARCH "x86-64-v2" CACHE STRING "Instruction set that the code is compiled for (-march)")
set(PELK_SANITIZE "" CACHE STRING "Sanitizers for all targets, as in -fsanitize (address,undefined or thread)")

# Several build folders of one checkout share what they have compiled, where ccache is there.
find_program(PELK_CCACHE ccache)
if(PELK_CCACHE)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${PELK_CCACHE})
endif()

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_CXX_FLAGS_RELEASE "-O3 -DNDEBUG")
set(CMAKE_CXX_FLAGS_DEBUG "-O1 -g")
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib)

add_library(pelk_flags INTERFACE)
target_include_directories(pelk_flags INTERFACE ${PROJECT_SOURCE_DIR})
# Results must not depend on the compiler: no contraction, no fast-math. A unique symbol of g++
# would keep a module from unloading.
target_compile_options(pelk_flags INTERFACE
  -march=${PELK_ARCH} -ffp-contract=off -fvisibility=hidden -fvisibility-inlines-hidden
  -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Werror
  $<$<CXX_COMPILER_ID:GNU>:-fno-gnu-unique>)
if(PELK_SANITIZE)
  target_compile_options(pelk_flags INTERFACE -fsanitize=${PELK_SANITIZE} -fno-omit-frame-pointer
    -fno-sanitize-recover=all)
  target_link_options(pelk_flags INTERFACE -fsanitize=${PELK_SANITIZE})
endif()

if(PELK_FUZZ)
  target_compile_options(pelk_flags INTERFACE -fsanitize=fuzzer-no-link)
endif()

# pelk_objects(NAME SOURCES ...): a folder whose objects stand in libpelk.so and nowhere else.
function(pelk_objects name)
  cmake_parse_arguments(ARG "" "" "SOURCES" ${ARGN})
  add_library(${name} OBJECT ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE pelk_flags)
endfunction()

# pelk_module(NAME SOURCES ... [USES ...]): a folder of code that links libpelk.so. USES lists
# the folders and libraries that it uses directly; those inside libpelk.so need no entry but
# tell the reader.
function(pelk_module name)
  cmake_parse_arguments(ARG "" "" "SOURCES;USES" ${ARGN})
  list(REMOVE_ITEM ARG_USES platform base contract)
  add_library(${name} STATIC ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE pelk_flags PUBLIC libpelk ${ARG_USES})
endfunction()

# pelk_tests(NAME SOURCE... [USES ...]): the test program of one folder, found by ctest.
function(pelk_tests name)
  cmake_parse_arguments(ARG "" "" "USES" ${ARGN})
  add_executable(${name}_tests ${ARG_UNPARSED_ARGUMENTS})
  target_include_directories(${name}_tests PRIVATE ${PROJECT_SOURCE_DIR}/tests)
  target_link_libraries(${name}_tests PRIVATE pelk_flags libpelk ${ARG_USES} GTest::gmock_main)
  # The race checker knows nothing of the locks of the image library's own threads.
  if(PELK_SANITIZE STREQUAL "thread")
    set(environment ENVIRONMENT "OPENIMAGEIO_OPTIONS=threads=1,exr_threads=-1")
  endif()
  gtest_discover_tests(${name}_tests DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 300 ${environment})
endfunction()
