# Headers, libraries, the program, and what find_package and pkg-config need.

include(CMakePackageConfigHelpers)

install(DIRECTORY host/include/ usr/include/ DESTINATION "${header_destination}" FILES_MATCHING PATTERN "*.hpp")
install(TARGETS kelhost oxrbitstreamutilities EXPORT oxrbitstreamutilitiesTargets
        LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}")
foreach(program oxrrec oxrmq)
  if(TARGET ${program})
    # The program finds its libraries from its own place, so that any prefix works.
    file(RELATIVE_PATH lib_from_bin "${CMAKE_INSTALL_FULL_BINDIR}" "${CMAKE_INSTALL_FULL_LIBDIR}")
    set_target_properties(${program} PROPERTIES INSTALL_RPATH "$ORIGIN/${lib_from_bin}")
    install(TARGETS ${program} RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}")
    install(FILES "${PROJECT_BINARY_DIR}/${program}.1" DESTINATION "${CMAKE_INSTALL_MANDIR}/man1")
    install(FILES "${PROJECT_BINARY_DIR}/${program}.bash" RENAME ${program}
            DESTINATION "${CMAKE_INSTALL_DATADIR}/bash-completion/completions")
  endif()
endforeach()
set_target_properties(oxrbitstreamutilities kelhost PROPERTIES INSTALL_RPATH "$ORIGIN")

set(package_destination "${CMAKE_INSTALL_LIBDIR}/cmake/oxrbitstreamutilities")
configure_package_config_file(cmake/oxrbitstreamutilitiesConfig.cmake.in
                              "${PROJECT_BINARY_DIR}/oxrbitstreamutilitiesConfig.cmake"
                              INSTALL_DESTINATION "${package_destination}")
write_basic_package_version_file("${PROJECT_BINARY_DIR}/oxrbitstreamutilitiesConfigVersion.cmake"
                                 COMPATIBILITY SameMajorVersion)
install(FILES "${PROJECT_BINARY_DIR}/oxrbitstreamutilitiesConfig.cmake"
              "${PROJECT_BINARY_DIR}/oxrbitstreamutilitiesConfigVersion.cmake"
        DESTINATION "${package_destination}")
install(EXPORT oxrbitstreamutilitiesTargets NAMESPACE oxrbitstreamutilities:: DESTINATION "${package_destination}")

# The library folder may be one or two levels deep: lib or lib/x86_64-linux-gnu.
file(RELATIVE_PATH prefix_from_pc "${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig" "${CMAKE_INSTALL_PREFIX}")
configure_file(cmake/oxrbitstreamutilities.pc.in "${PROJECT_BINARY_DIR}/oxrbitstreamutilities.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/oxrbitstreamutilities.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
