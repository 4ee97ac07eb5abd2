# One binary with all tests; ctest runs each test by itself.

find_package(GTest REQUIRED)
include(GoogleTest)

file(GLOB_RECURSE test_sources CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/tests/*.cpp")
list(FILTER test_sources EXCLUDE REGEX "/tests/(allocation|install|oxrmq/withbroker)/")
if(OXR_SANITIZE)
  # What the sanitizers' own memory is in the way of: other allocation functions, limits of memory, forks of threads.
  list(FILTER test_sources EXCLUDE REGEX "/(allocations|littlememory|fork)_test.cpp$")
endif()
if(OXR_SANITIZE STREQUAL thread)
  # Only the tests with threads are run there, so only their files are built.
  foreach(source IN LISTS test_sources)
    file(STRINGS "${source}" threaded REGEX "^TEST.*Threads" LIMIT_COUNT 1)
    if(source MATCHES "_test.cpp$" AND NOT threaded)
      list(REMOVE_ITEM test_sources "${source}")
    endif()
  endforeach()
endif()
add_executable(oxr_tests ${test_sources})
oxr_settings(oxr_tests)
# The comparisons that fuzz targets and tests share lie in fuzz/.
target_include_directories(oxr_tests PRIVATE "${PROJECT_SOURCE_DIR}/tests" "${PROJECT_SOURCE_DIR}")
# Only where they are used: all other objects are the same in each build folder, one entry of the compiler cache.
set_property(SOURCE ${PROJECT_SOURCE_DIR}/tests/oxrmq/parts_test.cpp
                    ${PROJECT_SOURCE_DIR}/tests/oxrrec/decode_test.cpp
                    ${PROJECT_SOURCE_DIR}/tests/oxrrec/shareddata_test.cpp
             APPEND PROPERTY COMPILE_DEFINITIONS OXR_SAMPLES_DIR="${PROJECT_SOURCE_DIR}/tools/oxrrec/samples"
                             OXR_SHARED_DATA_DIR="${OXR_SHARED_DATA_DIR}")
target_link_libraries(oxr_tests PRIVATE oxrrec_parts oxrmq_parts oxrbitstreamutilities oxrcore GTest::gmock GTest::gtest_main)
set_property(SOURCE ${PROJECT_SOURCE_DIR}/tests/oxrrec/littlememory_test.cpp
                    ${PROJECT_SOURCE_DIR}/tests/oxrrec/interruptions_test.cpp
             APPEND PROPERTY COMPILE_DEFINITIONS OXRREC_PROGRAM="$<TARGET_FILE:oxrrec>"
                             OXR_SAMPLES_DIR="${PROJECT_SOURCE_DIR}/tools/oxrrec/samples")
if(NOT OXR_SANITIZE STREQUAL thread)
  add_dependencies(oxr_tests oxrrec oxrrec_pages oxrmq_pages csv_example machine_pictures)
endif()
# The names of the tests are asked for when ctest runs: a build must not fail because a test binary cannot start.
gtest_discover_tests(oxr_tests DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 300)

# The clients are built without sanitizers, so that only a plain build can serve them.
if(NOT OXR_SANITIZE)
  add_test(NAME install COMMAND "${PROJECT_SOURCE_DIR}/tests/install/run" "${PROJECT_BINARY_DIR}" "${CMAKE_COMMAND}"
                                "${CMAKE_CXX_COMPILER}")
  set_tests_properties(install PROPERTIES TIMEOUT 300)

  add_test(NAME hardened
           COMMAND "${PROJECT_SOURCE_DIR}/tests/install/hardened" "$<TARGET_FILE:kelhost>"
                   "$<TARGET_FILE:oxrbitstreamutilities>" "$<TARGET_FILE:oxrrec>"
                   $<$<BOOL:${OXR_BUILD_PYTHON}>:$<TARGET_FILE:oxrrec_python>> -- "$<TARGET_FILE:oxrmq>")

  # The packages are of a build folder of their own, without what the tests have in the libraries.
  add_test(NAME make_packages COMMAND "${PROJECT_SOURCE_DIR}/dev" package)
  add_test(NAME packages COMMAND "${PROJECT_SOURCE_DIR}/tests/install/packages"
                                 "${PROJECT_SOURCE_DIR}/build/package/packages"
                                 "${PROJECT_SOURCE_DIR}/tools/oxrrec/samples" "${CMAKE_COMMAND}" "${CMAKE_CXX_COMPILER}")
  add_test(NAME symbols COMMAND "${PROJECT_SOURCE_DIR}/tests/install/symbols" "${PROJECT_SOURCE_DIR}/build/package"
                                "${PROJECT_SOURCE_DIR}/packaging")
  set_tests_properties(make_packages PROPERTIES FIXTURES_SETUP packages TIMEOUT 900)
  set_tests_properties(packages symbols PROPERTIES FIXTURES_REQUIRED packages TIMEOUT 300)
endif()

# What allocations that fail do: a program of its own, since it replaces the allocators of the whole process. Here it
# tries a sample; `oxr_allocation_tests --all` tries all. Its operations lie in fuzz/, with the other long searches.
if(NOT OXR_SANITIZE)
  file(GLOB allocation_test_sources CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/tests/allocation/*.cpp"
       "${PROJECT_SOURCE_DIR}/fuzz/allocation/*.cpp")
  add_executable(oxr_allocation_tests ${allocation_test_sources})
  oxr_settings(oxr_allocation_tests)
  target_include_directories(oxr_allocation_tests PRIVATE "${PROJECT_SOURCE_DIR}/tests" "${PROJECT_SOURCE_DIR}")
  target_link_libraries(oxr_allocation_tests PRIVATE oxrbitstreamutilities ${CMAKE_DL_LIBS})
  add_dependencies(oxr_tests oxr_allocation_tests)
  add_test(NAME allocations_that_fail COMMAND oxr_allocation_tests)
  set_tests_properties(allocations_that_fail PROPERTIES TIMEOUT 300)
endif()

# oxrmq and a message broker, which the tests start and stop themselves: one run, for the broker takes its time.
file(GLOB broker_test_sources CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/tests/oxrmq/withbroker/*.cpp")
add_executable(oxrmq_broker_tests ${broker_test_sources})
oxr_settings(oxrmq_broker_tests)
target_include_directories(oxrmq_broker_tests PRIVATE "${PROJECT_SOURCE_DIR}/tests")
target_compile_definitions(oxrmq_broker_tests PRIVATE OXRMQ_BROKER="${PROJECT_SOURCE_DIR}/tests/oxrmq/broker"
                                                      OXRMQ_PROGRAM="$<TARGET_FILE:oxrmq>"
                                                      OXR_SAMPLES_DIR="${PROJECT_SOURCE_DIR}/tools/oxrrec/samples")
target_link_libraries(oxrmq_broker_tests PRIVATE oxrrec_parts oxrmq_parts GTest::gmock)
add_dependencies(oxrmq_broker_tests oxrmq)
if(NOT OXR_SANITIZE)
  # Elsewhere nobody runs them.
  add_dependencies(oxr_tests oxrmq_broker_tests)
endif()
add_test(NAME oxrmq_broker COMMAND oxrmq_broker_tests)
add_test(NAME oxrmq_docs COMMAND "${PROJECT_SOURCE_DIR}/tests/oxrmq/docs_examples" "$<TARGET_FILE:oxrmq>"
                                 "${PROJECT_SOURCE_DIR}/docs/oxrmq.md" "${PROJECT_SOURCE_DIR}/tools/oxrrec/samples")
set_tests_properties(oxrmq_broker oxrmq_docs PROPERTIES TIMEOUT 900)

# The page of `oxrrec explain` in a browser; its screenshots stay in the build folder.
add_test(NAME explain_page COMMAND "${PROJECT_SOURCE_DIR}/tests/oxrrec/explain_page" "$<TARGET_FILE:oxrrec>"
                                   "${PROJECT_SOURCE_DIR}/tools/oxrrec/samples" "${PROJECT_BINARY_DIR}/explain")
set_tests_properties(explain_page PROPERTIES TIMEOUT 300)
add_test(NAME docs_examples COMMAND "${PROJECT_SOURCE_DIR}/tests/oxrrec/docs_examples" "$<TARGET_FILE:oxrrec>"
                                    "${PROJECT_SOURCE_DIR}/docs/oxrrec.md" "${PROJECT_SOURCE_DIR}/tools/oxrrec/samples"
                                    "${PROJECT_SOURCE_DIR}/README.md")

# The example of docs/workers.md: what it prints; and that the docs show its code, and the checker's tables, as they are.
file(GLOB csv_sources CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/examples/csv/*.cpp")
add_executable(csv_example ${csv_sources})
oxr_settings(csv_example)
target_link_libraries(csv_example PRIVATE oxrbitstreamutilities)
add_test(NAME example
         COMMAND bash -o pipefail -c "\"$1\" | diff - \"$2\"" bash "$<TARGET_FILE:csv_example>"
                 "${PROJECT_SOURCE_DIR}/examples/csv/expected.txt")
add_test(NAME docs COMMAND "${PROJECT_SOURCE_DIR}/docs/check" "$<TARGET_FILE:machine_pictures>")
add_test(NAME reference_pages COMMAND "${PROJECT_SOURCE_DIR}/docs/reference/make" "${PROJECT_VERSION}")
