# add_layer(<name> HEADERS ... SOURCES ... [USES ...] [PRIVATE_USES ...])
#
# One static library per folder below src/. Each layer gets an include gate of its own: a folder in the
# build tree that holds nothing but a link named like the layer, so that "recording/WaveHeader.h" can be
# found by targets that link `recording` and by no others. USES are the layers below it that its headers
# show; PRIVATE_USES are those, and the packages, that only its sources call.
function(add_layer name)
  cmake_parse_arguments(ARG "" "" "HEADERS;SOURCES;USES;PRIVATE_USES" ${ARGN})
  set(gate ${CMAKE_BINARY_DIR}/layers/${name})
  file(MAKE_DIRECTORY ${gate})
  file(CREATE_LINK ${CMAKE_CURRENT_SOURCE_DIR} ${gate}/${name} SYMBOLIC)

  add_library(${name} STATIC ${ARG_SOURCES})
  list(TRANSFORM ARG_HEADERS PREPEND ${gate}/${name}/ OUTPUT_VARIABLE headers)
  target_sources(${name} PUBLIC FILE_SET HEADERS BASE_DIRS ${gate} FILES ${headers})
  # Each header compiles alone; built by the target all_verify_interface_header_sets.
  target_compile_features(${name} PUBLIC cxx_std_20)
  set_target_properties(${name} PROPERTIES VERIFY_INTERFACE_HEADER_SETS ON)
  target_link_libraries(${name} PUBLIC ${ARG_USES} PRIVATE ${ARG_PRIVATE_USES} project_options)
  set_target_properties(${name} PROPERTIES LAYER_SOURCES "${ARG_SOURCES}")
endfunction()
