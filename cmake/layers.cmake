# rdv_layer(NAME [DEPENDS lib...] [ALSO pattern...]): a static library of the folder's own sources, not
# of its subfolders, so that a file belongs to the layer in whose folder it lies. ALSO names the files
# of folders below that belong to it.
function(rdv_layer name)
  cmake_parse_arguments(ARG "" "" "DEPENDS;ALSO" ${ARGN})
  file(GLOB sources CONFIGURE_DEPENDS "*.cpp" "*.h" ${ARG_ALSO})
  add_library(${name} STATIC ${sources})
  set_target_properties(${name} PROPERTIES LINKER_LANGUAGE CXX)
  target_include_directories(${name} PUBLIC "${CMAKE_SOURCE_DIR}")
  target_link_libraries(${name} PUBLIC ${ARG_DEPENDS} PRIVATE rdv_warnings)
endfunction()
