# Flags of every target: warnings, hardening, sanitizers.

add_compile_options(-Wall -Wextra -Wpedantic -Wshadow -Wconversion)
if(KNOB_WERROR)
  add_compile_options(-Werror)
endif()

if(KNOB_FUZZ)
  set(KNOB_SANITIZE ON)
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()

if(KNOB_SANITIZE)
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=all
                      -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
  # Half the time of compiling; a report shows lines all the same.
  if(NOT KNOB_FUZZ)
    add_compile_options(-O1 -g1)
  endif()
  # GCC takes instrumented code of the standard library for reads of uninitialized members and for
  # copies between strings that overlap.
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    add_compile_options(-Wno-maybe-uninitialized -Wno-restrict)
  endif()
else()
  add_compile_options(-fstack-protector-strong)
  # Needs optimisation, and a packager may have asked for another level.
  if(NOT CMAKE_BUILD_TYPE STREQUAL "Debug" AND NOT CMAKE_CXX_FLAGS MATCHES "-O0|_FORTIFY_SOURCE")
    add_compile_options(-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2)
  endif()
  # Loading the shared C++ runtime and resolving names in it costs more than a whole run of the
  # program. Nothing but C and, between the tuning library and its modules, calls that throw nothing
  # passes from one binary into another, so each can have a runtime of its own.
  if(KNOB_STATIC_RUNTIME)
    add_link_options(-static-libstdc++ -static-libgcc)
  endif()
  add_link_options(LINKER:-z,relro,-z,now LINKER:-O1 LINKER:--as-needed)
  # What nothing calls, most of the C++ runtime, would still have to be mapped and relocated by every
  # run.
  add_compile_options(-ffunction-sections -fdata-sections)
  add_link_options(LINKER:--gc-sections)
endif()
