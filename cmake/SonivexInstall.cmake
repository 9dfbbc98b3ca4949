# The files that `cmake --install` installs, among them the CMake package (find_package(Sonivex)) and the
# pkg-config module (sonivex) for other projects.
include(CMakePackageConfigHelpers)

# The installed files find each other by relative paths, wherever the prefix is.
set_target_properties(SonivexFilter vorlin PROPERTIES INSTALL_RPATH "\$ORIGIN")
file(RELATIVE_PATH lib_from_bin "/${CMAKE_INSTALL_BINDIR}" "/${CMAKE_INSTALL_LIBDIR}")
set_target_properties(sonivex PROPERTIES INSTALL_RPATH "\$ORIGIN/${lib_from_bin}")

install(
    TARGETS SonivexFilter vorlin sonivex_headers sonivex
    EXPORT SonivexTargets
    RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}"
    LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}")
install(DIRECTORY "${PROJECT_SOURCE_DIR}/include/sonivex" "${PROJECT_SOURCE_DIR}/host/include/vorlin"
        DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}")
# The program looks for presets in ../share/sonivex/presets from its own folder.
install(DIRECTORY "${PROJECT_SOURCE_DIR}/presets/" DESTINATION "${CMAKE_INSTALL_DATAROOTDIR}/sonivex/presets"
        FILES_MATCHING PATTERN "*.preset")
install(FILES "${PROJECT_SOURCE_DIR}/LICENSE" "${PROJECT_SOURCE_DIR}/README.md" DESTINATION "${CMAKE_INSTALL_DOCDIR}")

set(package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/Sonivex")
install(EXPORT SonivexTargets NAMESPACE Sonivex:: DESTINATION "${package_dir}")
configure_package_config_file("${PROJECT_SOURCE_DIR}/cmake/SonivexConfig.cmake.in"
                              "${PROJECT_BINARY_DIR}/SonivexConfig.cmake" INSTALL_DESTINATION "${package_dir}")
write_basic_package_version_file("${PROJECT_BINARY_DIR}/SonivexConfigVersion.cmake" COMPATIBILITY SameMinorVersion)
install(FILES "${PROJECT_BINARY_DIR}/SonivexConfig.cmake" "${PROJECT_BINARY_DIR}/SonivexConfigVersion.cmake"
        DESTINATION "${package_dir}")

configure_file("${PROJECT_SOURCE_DIR}/cmake/sonivex.pc.in" "${PROJECT_BINARY_DIR}/sonivex.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/sonivex.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
