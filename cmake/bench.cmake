# Benchmarks: one binary. Where GnuCOBOL's run time and OpenSSL are at hand, their packed decimals and Base64 serve as
# yardsticks.

find_package(benchmark REQUIRED)

file(GLOB_RECURSE bench_sources CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/bench/*.cpp")
add_executable(oxr_bench ${bench_sources})
oxr_settings(oxr_bench)
target_include_directories(oxr_bench PRIVATE "${PROJECT_SOURCE_DIR}/bench")
target_compile_definitions(oxr_bench PRIVATE OXR_SAMPLES_DIR="${PROJECT_SOURCE_DIR}/tools/oxrrec/samples")
target_link_libraries(oxr_bench PRIVATE oxrrec_parts oxrbitstreamutilities oxrcore benchmark::benchmark_main)

find_library(LIBCOB_LIBRARY cob)
find_path(LIBCOB_INCLUDE_DIR libcob.h)
if(LIBCOB_LIBRARY AND LIBCOB_INCLUDE_DIR)
  target_compile_definitions(oxr_bench PRIVATE OXR_HAVE_LIBCOB)
  target_include_directories(oxr_bench SYSTEM PRIVATE ${LIBCOB_INCLUDE_DIR})
  target_link_libraries(oxr_bench PRIVATE ${LIBCOB_LIBRARY})
endif()

find_package(OpenSSL)
if(OpenSSL_FOUND)
  target_compile_definitions(oxr_bench PRIVATE OXR_HAVE_OPENSSL)
  target_link_libraries(oxr_bench PRIVATE OpenSSL::Crypto)
endif()
