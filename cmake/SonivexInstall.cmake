# The files that `cmake --install` installs, among them the CMake package (find_package(Sonivex)), the pkg-config
# modules sonivex and vorlin, and the guides. The installed files find each other by relative paths, wherever the
# prefix is. The target uninstall removes them again.
include(CMakePackageConfigHelpers)

# ---- libraries, programs, headers ----

set(package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/Sonivex")

#   sonivex_install_targets(component target...)
#
# Installs the targets of one component of the CMake package.
function(sonivex_install_targets component)
    if(component STREQUAL "effects")
        set(file SonivexTargets)
    else()
        set(file Sonivex-${component})
    endif()
    install(
        TARGETS ${ARGN}
        EXPORT ${file}
        RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}"
        LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}"
        ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}")
    install(EXPORT ${file} NAMESPACE Sonivex:: DESTINATION "${package_dir}")
endfunction()

sonivex_install_targets(effects sonivex_headers sonivex_shared)
sonivex_install_targets(static sonivex_static)
install(DIRECTORY "${PROJECT_SOURCE_DIR}/include/sonivex" DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}")
if(SONIVEX_FILTER)
    set_target_properties(SonivexFilter vorlin PROPERTIES INSTALL_RPATH "\$ORIGIN")
    sonivex_install_targets(framework vorlin SonivexFilter)
    install(DIRECTORY "${PROJECT_SOURCE_DIR}/host/include/vorlin" DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}")
endif()
if(SONIVEX_TOOLS)
    file(RELATIVE_PATH lib_from_bin "/${CMAKE_INSTALL_BINDIR}" "/${CMAKE_INSTALL_LIBDIR}")
    set_target_properties(sonivex_tool PROPERTIES INSTALL_RPATH "\$ORIGIN/${lib_from_bin}")
    sonivex_install_targets(tools sonivex_tool)
    # The program looks for presets in ../share/sonivex/presets from its own folder.
    install(DIRECTORY "${PROJECT_SOURCE_DIR}/presets/" DESTINATION "${CMAKE_INSTALL_DATAROOTDIR}/sonivex/presets"
            FILES_MATCHING PATTERN "*.preset")
endif()

# ---- CMake package ----

set(static_libraries HWY:libhwy)
if(SONIVEX_HAS_DIALOGUE)
    list(APPEND static_libraries LIBAVUTIL:libavutil)
endif()
configure_package_config_file("${PROJECT_SOURCE_DIR}/cmake/SonivexConfig.cmake.in"
                              "${PROJECT_BINARY_DIR}/SonivexConfig.cmake" INSTALL_DESTINATION "${package_dir}")
write_basic_package_version_file("${PROJECT_BINARY_DIR}/SonivexConfigVersion.cmake" COMPATIBILITY SameMinorVersion)
install(FILES "${PROJECT_BINARY_DIR}/SonivexConfig.cmake" "${PROJECT_BINARY_DIR}/SonivexConfigVersion.cmake"
        DESTINATION "${package_dir}")

# ---- pkg-config modules ----

# The modules lie two or three folders below the prefix and name it relative to their own place, unless the folders
# were given as absolute paths.
set(pc_dir "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
if(IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}")
    set(pc_prefix "${CMAKE_INSTALL_PREFIX}")
    set(pc_libdir "${CMAKE_INSTALL_LIBDIR}")
else()
    file(RELATIVE_PATH prefix_from_pc "/${pc_dir}" "/")
    string(REGEX REPLACE "/$" "" prefix_from_pc "${prefix_from_pc}")
    set(pc_prefix "\${pcfiledir}/${prefix_from_pc}")
    set(pc_libdir "\${prefix}/${CMAKE_INSTALL_LIBDIR}")
endif()
if(IS_ABSOLUTE "${CMAKE_INSTALL_INCLUDEDIR}")
    set(pc_includedir "${CMAKE_INSTALL_INCLUDEDIR}")
else()
    set(pc_includedir "\${prefix}/${CMAKE_INSTALL_INCLUDEDIR}")
endif()
list(JOIN chosen_effects " " pc_effects)
set(pc_private_libs ${HWY_LDFLAGS})
if(SONIVEX_HAS_DIALOGUE)
    list(APPEND pc_private_libs ${LIBAVUTIL_LDFLAGS})
endif()
foreach(library IN LISTS SONIVEX_CXX_RUNTIME)
    list(APPEND pc_private_libs -l${library})
endforeach()
list(JOIN pc_private_libs " " pc_private_libs)

set(pc_modules sonivex)
if(SONIVEX_FILTER)
    list(APPEND pc_modules vorlin)
endif()
foreach(module IN LISTS pc_modules)
    configure_file("${PROJECT_SOURCE_DIR}/cmake/${module}.pc.in" "${PROJECT_BINARY_DIR}/${module}.pc" @ONLY)
    install(FILES "${PROJECT_BINARY_DIR}/${module}.pc" DESTINATION "${pc_dir}")
endforeach()

include(SonivexInstalledGuides)
