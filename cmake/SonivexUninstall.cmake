# The target uninstall removes what `cmake --install` installed last, and the folders that it made. The main file
# includes this module before all folders, because the installation first notes which folders it has to make.
set(standard_folders
    "${CMAKE_INSTALL_BINDIR}" "${CMAKE_INSTALL_LIBDIR}/cmake" "${CMAKE_INSTALL_LIBDIR}/lv2"
    "${CMAKE_INSTALL_LIBDIR}/pkgconfig" "${CMAKE_INSTALL_INCLUDEDIR}" "${CMAKE_INSTALL_DATADIR}" "${CMAKE_INSTALL_DATAROOTDIR}" "${CMAKE_INSTALL_DOCDIR}"
    "${CMAKE_INSTALL_MANDIR}/man1" "${CMAKE_INSTALL_DATAROOTDIR}/bash-completion/completions"
    "${CMAKE_INSTALL_DATAROOTDIR}/zsh/site-functions" "${CMAKE_INSTALL_DATAROOTDIR}/fish/vendor_completions.d")
configure_file("${PROJECT_SOURCE_DIR}/cmake/note-folders.cmake.in" "${PROJECT_BINARY_DIR}/note-folders.cmake" @ONLY)
configure_file("${PROJECT_SOURCE_DIR}/cmake/uninstall.cmake.in" "${PROJECT_BINARY_DIR}/uninstall.cmake" @ONLY)
install(SCRIPT "${PROJECT_BINARY_DIR}/note-folders.cmake")
add_custom_target(
    uninstall
    COMMAND "${CMAKE_COMMAND}" -P "${PROJECT_BINARY_DIR}/uninstall.cmake"
    COMMENT "Removing the installed files"
    VERBATIM)
