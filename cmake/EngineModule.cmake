# Engine modules: shared objects that the tuning library loads when a server name of their kind is
# opened for the first time.
add_custom_target(engine-modules)

# knob_engine_module(<name> SOURCES ... LIBRARIES ...): the module lib<name>.so. It exports its doors
# (EngineModule.h, registry/RegistryDoors.h) and nothing else.
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
    LIBRARY_OUTPUT_DIRECTORY ${KNOB_BUILD_MODULEDIR}
    LINK_DEPENDS ${exports})
  install(TARGETS ${name} LIBRARY DESTINATION ${KNOB_MODULEDIR} COMPONENT runtime)
  add_dependencies(engine-modules ${name})
endfunction()

# knob_add_engine_folders(): the folders, below the one that calls it, of the parts that are built.
function(knob_add_engine_folders)
  if(KNOB_POSTGRESQL)
    add_subdirectory(postgresql)
  endif()
  if(KNOB_CATALOGUE_FILES)
    add_subdirectory(cataloguefile)
  endif()
  if(KNOB_ETCD OR KNOB_PATRONI)
    add_subdirectory(http)
  endif()
  if(KNOB_ETCD)
    add_subdirectory(etcd)
  endif()
  if(KNOB_PATRONI)
    add_subdirectory(patroni)
  endif()
endfunction()
