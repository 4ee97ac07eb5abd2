# What all targets share: build type, launcher, language level, warnings, sanitizers, hidden symbols.

if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
  set(CMAKE_BUILD_TYPE Release CACHE STRING "Release, RelWithDebInfo or Debug" FORCE)
endif()

find_program(CCACHE_PROGRAM ccache)
if(CCACHE_PROGRAM AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  set(CMAKE_CXX_COMPILER_LAUNCHER "${CCACHE_PROGRAM}")
  if(NOT OXR_COVERAGE)
    # What one clone compiled serves the next one, too. Coverage has the clone's own paths in its counters.
    list(PREPEND CMAKE_CXX_COMPILER_LAUNCHER
         ${CMAKE_COMMAND} -E env "CCACHE_BASEDIR=${PROJECT_SOURCE_DIR}" CCACHE_NOHASHDIR=1)
  endif()
endif()

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

# Only what carries an export macro is seen outside its shared library.
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)

if(OXR_FUZZ)
  if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang" OR NOT OXR_SANITIZE)
    message(FATAL_ERROR "OXR_FUZZ needs clang and sanitizers: use the preset asan")
  endif()
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()
if(OXR_COVERAGE)
  if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    message(FATAL_ERROR "OXR_COVERAGE needs clang: set CMAKE_CXX_COMPILER=clang++ or use the preset coverage")
  endif()
  # The counters are those of the source, whatever the optimizer does; those of several threads are to be right.
  add_compile_options(-fprofile-instr-generate -fcoverage-mapping -fprofile-update=atomic)
  add_link_options(-fprofile-instr-generate)
elseif(OXR_SANITIZE)
  # Instrumented code leads gcc to see unset variables in the standard library's own headers.
  add_compile_options(-fsanitize=${OXR_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer
                      $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
  add_link_options(-fsanitize=${OXR_SANITIZE})
else()
  # A shared library that leans on a symbol nobody gives it fails here, not at the user's. Sanitizers of clang
  # leave their run time to the executable, hence not with them.
  set(CMAKE_SHARED_LINKER_FLAGS "${CMAKE_SHARED_LINKER_FLAGS} -Wl,--no-undefined")
endif()

# Warnings for one of our own targets.
function(oxr_settings target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Wold-style-cast
                                           $<$<BOOL:${OXR_WARNINGS_AS_ERRORS}>:-Werror>)
endfunction()

# What Debian hardens its own packages with, for what is shipped: calls of the C library that know the sizes of their
# targets, stacks that see that they were overrun, no format but a literal, and tables of addresses that are read-only
# once the program runs. Programs are position-independent by the compiler's own default. Sanitizers have better checks
# of their own.
function(oxr_harden target)
  if(OXR_SANITIZE)
    return()
  endif()
  target_compile_options(${target} PRIVATE -fstack-protector-strong -Wformat -Werror=format-security
                                           $<$<CONFIG:Release,RelWithDebInfo>:-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2>)
  target_link_options(${target} PRIVATE -Wl,-z,relro,-z,now)
endfunction()

# A library of our own.
function(oxr_add_library target kind)
  add_library(${target} ${kind} ${ARGN})
  oxr_settings(${target})
  oxr_harden(${target})
  if(kind STREQUAL "SHARED")
    set_target_properties(${target} PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR})
    # A call from one exported member to another goes straight there: nobody replaces our functions at load.
    target_compile_options(${target} PRIVATE -fno-semantic-interposition)
    target_link_options(${target} PRIVATE -Wl,-Bsymbolic-functions
                                          "-Wl,--version-script=${PROJECT_SOURCE_DIR}/cmake/exports.map")
    set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS "${PROJECT_SOURCE_DIR}/cmake/exports.map")
  endif()
endfunction()

# A program of tools/<name>: all but its main() is the library <name>_parts. The program knows its options best, and so
# makes its own man page and completion.
function(oxr_add_program name)
  file(GLOB_RECURSE sources CONFIGURE_DEPENDS tools/${name}/*.cpp)
  list(REMOVE_ITEM sources "${PROJECT_SOURCE_DIR}/tools/${name}/main.cpp")
  oxr_add_library(${name}_parts STATIC ${sources})
  set_property(SOURCE tools/${name}/program.cpp APPEND PROPERTY COMPILE_DEFINITIONS OXR_VERSION="${PROJECT_VERSION}")
  target_link_libraries(${name}_parts PUBLIC oxrrecords)
  add_executable(${name} tools/${name}/main.cpp)
  oxr_settings(${name})
  oxr_harden(${name})
  target_link_libraries(${name} PRIVATE ${name}_parts)
  add_custom_command(OUTPUT ${name}.1 ${name}.bash DEPENDS ${name}
                     COMMAND ${name} help --as man > ${name}.1 COMMAND ${name} help --as bash > ${name}.bash)
  add_custom_target(${name}_pages ALL DEPENDS ${name}.1 ${name}.bash)
endfunction()
