# Where things lie. The build tree mirrors the install tree, so the program finds its library, its
# modules and its bundles by the same relative paths in both, and either tree can be moved as a whole.
#
#   KNOB_BINDIR, KNOB_LIBDIR, KNOB_MODULEDIR, KNOB_BUNDLEDIR   as install() takes them
#   KNOB_BUILD_<the same>                                      the folders of the build tree
#   KNOB_RUN_PATH      of the program and of what lies beside it, to the tuning library
#   KNOB_BUNDLE_PATH   from the program's folder to the bundles
#   KNOB_MODULE_PATH   from the tuning library's folder to the engine modules
include(GNUInstallDirs)

set(KNOB_LIBRARY_DIR "" CACHE STRING
  "The tuning library's folder, CMAKE_INSTALL_LIBDIR if empty. One that is named knob holds the engine modules as well; any other has a folder knob for them")

set(KNOB_BINDIR ${CMAKE_INSTALL_BINDIR})
set(KNOB_BUNDLEDIR ${CMAKE_INSTALL_DATADIR}/knob)
set(KNOB_LIBDIR ${CMAKE_INSTALL_LIBDIR})
if(KNOB_LIBRARY_DIR)
  set(KNOB_LIBDIR ${KNOB_LIBRARY_DIR})
endif()
set(KNOB_MODULEDIR ${KNOB_LIBDIR})
cmake_path(GET KNOB_LIBDIR FILENAME name)
if(NOT name STREQUAL "knob")
  string(APPEND KNOB_MODULEDIR /knob)
endif()

# What the build tree mirrors: the prefix or, when a folder lies outside of it, the whole system.
set(mirrored ${CMAKE_INSTALL_PREFIX})
set(folders BINDIR LIBDIR MODULEDIR BUNDLEDIR)
foreach(folder IN LISTS folders)
  cmake_path(ABSOLUTE_PATH KNOB_${folder} BASE_DIRECTORY ${CMAKE_INSTALL_PREFIX} NORMALIZE
             OUTPUT_VARIABLE full_${folder})
  cmake_path(IS_PREFIX CMAKE_INSTALL_PREFIX ${full_${folder}} NORMALIZE inside)
  if(NOT inside)
    set(mirrored /)
  endif()
endforeach()
foreach(folder IN LISTS folders)
  cmake_path(RELATIVE_PATH full_${folder} BASE_DIRECTORY ${mirrored} OUTPUT_VARIABLE below)
  set(KNOB_BUILD_${folder} ${PROJECT_BINARY_DIR}/${below})
endforeach()

cmake_path(RELATIVE_PATH full_LIBDIR BASE_DIRECTORY ${full_BINDIR} OUTPUT_VARIABLE to_library)
set(KNOB_RUN_PATH "$ORIGIN/${to_library}")
cmake_path(RELATIVE_PATH full_BUNDLEDIR BASE_DIRECTORY ${full_BINDIR}
           OUTPUT_VARIABLE KNOB_BUNDLE_PATH)
cmake_path(RELATIVE_PATH full_MODULEDIR BASE_DIRECTORY ${full_LIBDIR}
           OUTPUT_VARIABLE KNOB_MODULE_PATH)

set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${KNOB_BUILD_BINDIR})
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${KNOB_BUILD_LIBDIR})
set(CMAKE_BUILD_WITH_INSTALL_RPATH ON)
