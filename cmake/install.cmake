# Headers, libraries, the programs, and what find_package and pkg-config need. A component is what one Debian package
# holds (see packages.cmake); an install without packages takes them all.

include(CMakePackageConfigHelpers)

set(kelhost_package libkelhost${PROJECT_VERSION_MAJOR})
set(library_package liboxrbitstreamutilities${PROJECT_VERSION_MAJOR})
set(dev_package liboxrbitstreamutilities-dev)

install(DIRECTORY host/include/ usr/include/ DESTINATION "${header_destination}" COMPONENT ${dev_package}
        FILES_MATCHING PATTERN "*.hpp")
install(TARGETS kelhost EXPORT oxrbitstreamutilitiesTargets
        LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT ${kelhost_package} NAMELINK_COMPONENT ${dev_package})
install(TARGETS oxrbitstreamutilities EXPORT oxrbitstreamutilitiesTargets
        LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT ${library_package} NAMELINK_COMPONENT ${dev_package})
if(OXR_BUILD_TOOLS OR OXR_BUILD_TESTS)
  set(programs oxrrec oxrmq)
endif()
foreach(program ${programs})
  if(TARGET ${program})
    install(TARGETS ${program} RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT ${program})
    install(FILES "${PROJECT_BINARY_DIR}/${program}.bash" RENAME ${program}
            DESTINATION "${CMAKE_INSTALL_DATADIR}/bash-completion/completions" COMPONENT ${program})
    set(page ${program}.1)
    if(OXR_PACKAGES)
      set(page ${program}.1.gz)
      add_custom_command(OUTPUT ${page} DEPENDS ${program}.1 COMMAND gzip -9nc ${program}.1 > ${page})
      add_custom_target(${program}_packed_page ALL DEPENDS ${page})
    endif()
    install(FILES "${PROJECT_BINARY_DIR}/${page}" DESTINATION "${CMAKE_INSTALL_MANDIR}/man1" COMPONENT ${program})
  endif()
endforeach()
if(NOT OXR_PACKAGES)
  # Programs and libraries find each other from their own place, so that any prefix works.
  set_target_properties(oxrbitstreamutilities kelhost PROPERTIES INSTALL_RPATH "$ORIGIN")
  file(RELATIVE_PATH lib_from_bin "${CMAKE_INSTALL_FULL_BINDIR}" "${CMAKE_INSTALL_FULL_LIBDIR}")
  foreach(program ${programs})
    if(TARGET ${program})
      set_target_properties(${program} PROPERTIES INSTALL_RPATH "$ORIGIN/${lib_from_bin}")
    endif()
  endforeach()
endif()

set(package_destination "${CMAKE_INSTALL_LIBDIR}/cmake/oxrbitstreamutilities")
configure_package_config_file(cmake/oxrbitstreamutilitiesConfig.cmake.in
                              "${PROJECT_BINARY_DIR}/oxrbitstreamutilitiesConfig.cmake"
                              INSTALL_DESTINATION "${package_destination}")
write_basic_package_version_file("${PROJECT_BINARY_DIR}/oxrbitstreamutilitiesConfigVersion.cmake"
                                 COMPATIBILITY SameMajorVersion)
install(FILES "${PROJECT_BINARY_DIR}/oxrbitstreamutilitiesConfig.cmake"
              "${PROJECT_BINARY_DIR}/oxrbitstreamutilitiesConfigVersion.cmake"
        DESTINATION "${package_destination}" COMPONENT ${dev_package})
install(EXPORT oxrbitstreamutilitiesTargets NAMESPACE oxrbitstreamutilities:: DESTINATION "${package_destination}"
        COMPONENT ${dev_package})

# The library folder may be one or two levels deep: lib or lib/x86_64-linux-gnu.
file(RELATIVE_PATH prefix_from_pc "${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig" "${CMAKE_INSTALL_PREFIX}")
configure_file(cmake/oxrbitstreamutilities.pc.in "${PROJECT_BINARY_DIR}/oxrbitstreamutilities.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/oxrbitstreamutilities.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig"
        COMPONENT ${dev_package})
