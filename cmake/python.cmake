# The package oxrrec for Python, as it is installed: files of Python, and a module of C++ that has the program's parts.
# Made for the Python that Debian's packages are for, whichever one else is at hand.

set(Python_EXECUTABLE /usr/bin/python3 CACHE FILEPATH "The interpreter that the package is for")
find_package(Python 3.11 REQUIRED COMPONENTS Interpreter Development.Module)
find_package(pybind11 REQUIRED)

file(GLOB python_sources CONFIGURE_DEPENDS python/src/*.cpp)
file(GLOB python_files CONFIGURE_DEPENDS python/oxrrec/*.py python/oxrrec/*.pyi python/oxrrec/py.typed)
set(python_folder "${PROJECT_BINARY_DIR}/python")

add_library(oxrrec_python MODULE ${python_sources})
oxr_settings(oxrrec_python)
oxr_harden(oxrrec_python)
target_include_directories(oxrrec_python PRIVATE python/src)
set_property(SOURCE ${PROJECT_SOURCE_DIR}/python/src/module.cpp
             APPEND PROPERTY COMPILE_DEFINITIONS OXR_VERSION="${PROJECT_VERSION}")
target_link_libraries(oxrrec_python PRIVATE pybind11::module oxrrec_parts)
# Hidden: what the module has of the program's libraries is nobody else's.
target_link_options(oxrrec_python PRIVATE -Wl,--exclude-libs,ALL)
set_target_properties(oxrrec_python PROPERTIES PREFIX "" OUTPUT_NAME _oxrrec SUFFIX ".${Python_SOABI}.so"
                                               LIBRARY_OUTPUT_DIRECTORY "${python_folder}/oxrrec")
add_custom_command(TARGET oxrrec_python POST_BUILD
                   COMMAND "${CMAKE_COMMAND}" -E copy_if_different ${python_files} "${python_folder}/oxrrec")
# A change in a file of Python alone brings the copies up to date too.
set_property(TARGET oxrrec_python APPEND PROPERTY LINK_DEPENDS "${python_files}")

# Where Debian's Python looks, for a prefix of /usr.
set(OXR_PYTHON_DIR lib/python3/dist-packages CACHE STRING "Where the package is installed, from the prefix")
set(package_folder "${OXR_PYTHON_DIR}/oxrrec")
if(NOT OXR_PACKAGES)
  # The module finds the libraries from its own place, so that any prefix works.
  file(RELATIVE_PATH lib_from_package "${CMAKE_INSTALL_PREFIX}/${package_folder}" "${CMAKE_INSTALL_FULL_LIBDIR}")
  set_target_properties(oxrrec_python PROPERTIES INSTALL_RPATH "$ORIGIN/${lib_from_package}")
endif()
# A build of one program alone does not make it.
install(TARGETS oxrrec_python LIBRARY DESTINATION "${package_folder}" COMPONENT python3-oxrrec OPTIONAL)
install(FILES ${python_files} DESTINATION "${package_folder}" COMPONENT python3-oxrrec)

if(OXR_BUILD_TESTS)
  # The package as it lies in the build folder: its tests, the examples of its docstrings and of its page, and its types.
  add_test(NAME python COMMAND "${PROJECT_SOURCE_DIR}/tests/python/run" "${Python_EXECUTABLE}" "${python_folder}"
                               "$<TARGET_FILE:oxrrec>" "${PROJECT_SOURCE_DIR}" "${OXR_SHARED_DATA_DIR}")
  set_tests_properties(python PROPERTIES TIMEOUT 600)
endif()
