# add_layer_tests([UNTESTED Name.cpp ...])
#
# To be called in tests/unit/<layer>: builds <layer>_unit_tests of all *_test.cpp there. Configuring
# fails when a source of the layer has no test of its name and is not listed as UNTESTED, where the
# caller says why.
include(GoogleTest)

function(add_layer_tests)
  cmake_parse_arguments(ARG "" "" "UNTESTED" ${ARGN})
  get_filename_component(layer ${CMAKE_CURRENT_SOURCE_DIR} NAME)
  file(GLOB tests CONFIGURE_DEPENDS *_test.cpp)

  get_target_property(sources ${layer} LAYER_SOURCES)
  foreach(source IN LISTS sources)
    get_filename_component(name ${source} NAME_WE)
    if(NOT source IN_LIST ARG_UNTESTED AND NOT EXISTS ${CMAKE_CURRENT_SOURCE_DIR}/${name}_test.cpp)
      message(FATAL_ERROR "src/${layer}/${source} has no tests/unit/${layer}/${name}_test.cpp")
    endif()
  endforeach()

  set(program ${layer}_unit_tests)
  add_executable(${program} ${tests})
  target_link_libraries(${program} PRIVATE ${layer} test_support GTest::gmock_main project_options)
  gtest_discover_tests(${program} TEST_PREFIX ${layer}. PROPERTIES LABELS unit DISCOVERY_TIMEOUT 60)
endfunction()
