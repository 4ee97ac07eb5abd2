# Debian packages by CPack, a component of the install each. What of other packages they need, dpkg-shlibdeps finds in
# the binaries; of one another they need the very same version.

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME ${PROJECT_NAME})
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "The ${PROJECT_NAME} developers <oxr@example.org>")
# Each package's own stands in the first line of its description.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_PACKAGE_DIRECTORY "${PROJECT_BINARY_DIR}/packages")
set(CPACK_STRIP_FILES ON)
# Whatever mask the user has who builds.
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE
                                                WORLD_READ WORLD_EXECUTE)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_COMPONENTS_ALL "")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SOURCE ${PROJECT_NAME})
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${PROJECT_BINARY_DIR}")
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")

configure_file(packaging/changelog.in changelog.Debian @ONLY)
execute_process(COMMAND gzip -9nc changelog.Debian WORKING_DIRECTORY "${PROJECT_BINARY_DIR}"
                OUTPUT_FILE "${PROJECT_BINARY_DIR}/changelog.Debian.gz" COMMAND_ERROR_IS_FATAL ANY)
# For the libraries: the package manager is to make the loader's cache anew. CPack would write scripts for that by
# itself, with what is to be said only as a trigger; naming them, though they are not there, keeps it from that.
set(library_control "${PROJECT_SOURCE_DIR}/packaging/triggers;${PROJECT_BINARY_DIR}/none/postinst"
                    "${PROJECT_BINARY_DIR}/none/postrm")

# oxr_package(<name> SECTION <section> DESCRIPTION <line>... [NEEDS <own package>...] [DEPENDS <other package>...]
#             [RECOMMENDS <package>] [LIBRARY]): the component <name> is a package. The first line of its description is
#             the summary.
function(oxr_package name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "LIBRARY" "SECTION;RECOMMENDS" "DESCRIPTION;NEEDS;DEPENDS")
  string(TOUPPER ${name} upper)
  list(JOIN arg_DESCRIPTION "\n" description)
  list(JOIN arg_DEPENDS ", " depends)
  set(CPACK_COMPONENTS_ALL ${CPACK_COMPONENTS_ALL} ${name} PARENT_SCOPE)
  set(CPACK_COMPONENT_${upper}_DEPENDS ${arg_NEEDS} PARENT_SCOPE)
  set(CPACK_COMPONENT_${upper}_DESCRIPTION "${description}" PARENT_SCOPE)
  set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${name} PARENT_SCOPE)
  set(CPACK_DEBIAN_${upper}_PACKAGE_SECTION ${arg_SECTION} PARENT_SCOPE)
  set(CPACK_DEBIAN_${upper}_PACKAGE_DEPENDS "${depends}" PARENT_SCOPE)
  set(CPACK_DEBIAN_${upper}_PACKAGE_RECOMMENDS "${arg_RECOMMENDS}" PARENT_SCOPE)
  if(arg_LIBRARY)
    set(CPACK_DEBIAN_${upper}_PACKAGE_CONTROL_EXTRA "${library_control}" PARENT_SCOPE)
  endif()
  install(FILES packaging/copyright "${PROJECT_BINARY_DIR}/changelog.Debian.gz"
          DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/${name}" COMPONENT ${name})
endfunction()

oxr_package(${kelhost_package} SECTION libs LIBRARY
            DESCRIPTION "stand-in for a message broker's runtime"
                        "Strings, log, exceptions, code page converters, time stamps and time zones"
                        "as the parsers and writers of a message broker use them, for programs that"
                        "run without the broker.")
oxr_package(${library_package} SECTION libs LIBRARY NEEDS ${kelhost_package}
            DESCRIPTION "conversion between values and the fields of messages"
                        "Reads and writes packed and external decimals, binary integers, IEEE and"
                        "hexadecimal floats, text in any code page, numbers and date-times as text,"
                        "and durations, as the parsers and writers of a message broker need them."
                        "Decimals never pass through a binary number: all digits of a field stay.")
oxr_package(${dev_package} SECTION libdevel NEEDS ${kelhost_package} ${library_package} DEPENDS libicu-dev
            DESCRIPTION "conversion between values and the fields of messages (development files)"
                        "Reads and writes packed and external decimals, binary integers, IEEE and"
                        "hexadecimal floats, text in any code page, numbers and date-times as text."
                        "." "This package has the headers and what CMake and pkg-config need.")
if("oxrrec" IN_LIST programs)
  oxr_package(oxrrec SECTION utils NEEDS ${kelhost_package} ${library_package}
              DESCRIPTION "mainframe record files to JSON or CSV, and back, by their COBOL copybook"
                          "Decodes the records of a file in EBCDIC or any other code page, with packed"
                          "and external decimals and binary fields, as a copybook lays them out; encodes"
                          "them again, shows where each field lies and what is in it, and finds what"
                          "would make bad fields readable.")
endif()
if("oxrmq" IN_LIST programs)
  oxr_package(oxrmq SECTION net NEEDS ${kelhost_package} ${library_package}
              DESCRIPTION "mainframe records in the messages of a broker to JSON, and back"
                          "Takes messages with records, as a COBOL copybook lays them out, from a queue of"
                          "an AMQP broker, and publishes what they say as JSON; or the other way round."
                          "Several may work on one queue on several machines, and no message is lost.")
endif()
if(TARGET oxrrec_python)
  # A module of C++ is for one version of the interpreter.
  math(EXPR next_minor "${Python_VERSION_MINOR} + 1")
  oxr_package(python3-oxrrec SECTION python NEEDS ${kelhost_package} ${library_package}
              DEPENDS "python3 (>= ${Python_VERSION_MAJOR}.${Python_VERSION_MINOR}~)"
                      "python3 (<< ${Python_VERSION_MAJOR}.${next_minor})"
              RECOMMENDS python3-numpy
              DESCRIPTION "mainframe record files as Python dicts and numpy arrays"
                          "Reads the records of a file in EBCDIC or any other code page, as a COBOL"
                          "copybook lays them out, into dicts or, by column, into numpy arrays, and"
                          "writes them.")
endif()
include(CPack)
