# knob_engine_module(<name> SOURCES ... LIBRARIES ...): the module lib<name>.so. It exports its door
# and nothing else.
function(knob_engine_module name)
  cmake_parse_arguments(PARSE_ARGV 1 MODULE "" "" "SOURCES;LIBRARIES")
  set(exports ${PROJECT_SOURCE_DIR}/platform/tuning/module.map)
  add_library(${name} MODULE ${MODULE_SOURCES})
  target_link_libraries(${name} PRIVATE ${MODULE_LIBRARIES})
  target_link_options(${name} PRIVATE
    LINKER:--version-script=${exports}
    $<$<NOT:$<BOOL:${KNOB_SANITIZE}>>:LINKER:--no-undefined>) # sanitizers' names are the program's
  set_target_properties(${name} PROPERTIES
    PREFIX lib
    SUFFIX .so
    LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib/knob
    LINK_DEPENDS ${exports})
  install(TARGETS ${name} LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/knob)
endfunction()
