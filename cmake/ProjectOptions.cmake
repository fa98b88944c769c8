# Everything that each target of the project is built with: language level, warnings, exact floating
# point and, where a preset asks for them, sanitizers.

option(DECKMATE_BENCHMARKS "Build the benchmarks (needs Google Benchmark)" OFF)
option(DECKMATE_FUZZERS "Build the fuzzers (needs Clang)" OFF)
option(DECKMATE_WARNINGS_AS_ERRORS "As every preset builds; other compilers may warn of more" OFF)
set(DECKMATE_SANITIZE "" CACHE STRING "Sanitizers for all targets, as -fsanitize= takes them")

if(NOT CMAKE_BUILD_TYPE)
  set(CMAKE_BUILD_TYPE Release)
endif()
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

add_library(project_options INTERFACE)
target_compile_features(project_options INTERFACE cxx_std_20)
target_compile_options(project_options INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wshadow
  $<$<BOOL:${DECKMATE_WARNINGS_AS_ERRORS}>:-Werror>
  -ffp-contract=off)
# Index checks of the standard library: cheap outside the sample loops, which use plain pointers.
target_compile_definitions(project_options INTERFACE _GLIBCXX_ASSERTIONS)

if(DECKMATE_SANITIZE)
  target_compile_options(project_options INTERFACE
    -fsanitize=${DECKMATE_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(project_options INTERFACE -fsanitize=${DECKMATE_SANITIZE})
endif()
