# tn_module(<target> <output name> <libraries>...): a module of the tuning library, built from the
# Module.cpp and module.map of the folder. It exports its door alone and lies where the tuning library
# looks for it.
function(tn_module target output)
  add_library(${target} MODULE Module.cpp)
  target_link_libraries(${target} PRIVATE ${ARGN})
  target_link_options(${target} PRIVATE
    LINKER:--version-script=${CMAKE_CURRENT_SOURCE_DIR}/module.map
    $<$<NOT:$<BOOL:${KNOB_SANITIZE}>>:LINKER:--no-undefined>) # sanitizers' names are the program's
  set_target_properties(${target} PROPERTIES
    PREFIX ""
    OUTPUT_NAME ${output}
    SUFFIX .so
    LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib/knob
    LINK_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/module.map)
  install(TARGETS ${target} LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/knob)
endfunction()
