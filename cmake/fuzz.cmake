# One libFuzzer binary for each fuzz/**/<name>_fuzz.cpp, named <name>_fuzz; `oxr_fuzz` makes them all.

add_custom_target(oxr_fuzz)

file(GLOB_RECURSE fuzz_sources CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/fuzz/*_fuzz.cpp")
foreach(source IN LISTS fuzz_sources)
  get_filename_component(name "${source}" NAME_WE)
  add_executable(${name} "${source}")
  oxr_settings(${name})
  add_dependencies(oxr_fuzz ${name})
  target_include_directories(${name} PRIVATE "${PROJECT_SOURCE_DIR}")
  target_link_libraries(${name} PRIVATE oxrrec_parts oxrbitstreamutilities oxrcore)
  target_link_options(${name} PRIVATE -fsanitize=fuzzer)
  set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/fuzz")
endforeach()
