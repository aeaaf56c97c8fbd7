# What an installation needs beside the programs and libraries themselves: the folders, the files by which others find
# the library, and the way back.

include(CMakePackageConfigHelpers)

# The folders that an installation may have to create, for the uninstallation to know which of them were there before.
set(install_folders
    ${CMAKE_INSTALL_BINDIR}
    ${CMAKE_INSTALL_LIBDIR}/pkgconfig
    ${CMAKE_INSTALL_LIBDIR}/cmake/util_vek
    ${CMAKE_INSTALL_INCLUDEDIR}
    ${CMAKE_INSTALL_DATADIR}/bash-completion/completions
    ${CMAKE_INSTALL_DATADIR}/zsh/site-functions
    ${CMAKE_INSTALL_DOCDIR}/docs/handbook
    ${CMAKE_INSTALL_DOCDIR}/docs/images
    ${CMAKE_INSTALL_MANDIR}/man1
    ${CMAKE_INSTALL_MANDIR}/man3
    ${CMAKE_INSTALL_MANDIR}/man5
    ${CMAKE_INSTALL_MANDIR}/man7)
configure_file(cmake/note_folders.cmake.in note_folders.cmake @ONLY)
install(SCRIPT ${PROJECT_BINARY_DIR}/note_folders.cmake)

# The programs find the library beside them in the build tree, and where it is installed after that. One folder each: the
# loader looks into dozens of subfolders of every folder that it is given. The paths are equally long, so that
# the one can take the place of the other; CMake itself pads with empty elements, which mean the current folder.
file(RELATIVE_PATH libraries_from_programs ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
set(TOVIRA_INSTALLED_RPATH "$ORIGIN/${libraries_from_programs}")
string(LENGTH "/${libraries_from_programs}" padding)
string(REPEAT "/" ${padding} padding)
set(TOVIRA_BUILD_RPATH "$ORIGIN${padding}")

# To be called behind the install() of a program.
function(tovira_install_rpath program)
    if(NOT CMAKE_SKIP_INSTALL_RPATH)
        install(CODE "
            set(folder \"${CMAKE_INSTALL_BINDIR}\")
            cmake_path(ABSOLUTE_PATH folder BASE_DIRECTORY \"\${CMAKE_INSTALL_PREFIX}\")
            file(RPATH_CHANGE FILE \"\$ENV{DESTDIR}\${folder}/${program}\" OLD_RPATH \"${TOVIRA_BUILD_RPATH}\"
                NEW_RPATH \"${TOVIRA_INSTALLED_RPATH}\")")
    endif()
endfunction()

# The prefix as seen from the pkg-config file, so that an installation may be moved; absolute folders stay.
file(RELATIVE_PATH prefix_from_pkgconfig ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
string(REGEX REPLACE "/$" "" prefix_from_pkgconfig "${prefix_from_pkgconfig}")
cmake_path(APPEND pkgconfig_libdir "\${prefix}" ${CMAKE_INSTALL_LIBDIR})
cmake_path(APPEND pkgconfig_includedir "\${prefix}" ${CMAKE_INSTALL_INCLUDEDIR})
configure_file(cmake/libutil_vek.pc.in libutil_vek.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/libutil_vek.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

configure_package_config_file(cmake/util_vekConfig.cmake.in util_vekConfig.cmake
    INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/util_vek)
# As long as the first number is 0, the second one counts the interfaces.
write_basic_package_version_file(util_vekConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/util_vekConfig.cmake ${PROJECT_BINARY_DIR}/util_vekConfigVersion.cmake
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/util_vek)
install(EXPORT util_vek NAMESPACE util_vek:: FILE util_vekTargets.cmake
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/util_vek)

# The pages lie to one another as they do here, so that their links hold.
install(FILES README.md ARCHITECTURE.md CHANGELOG.md CONTRIBUTING.md LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY docs DESTINATION ${CMAKE_INSTALL_DOCDIR})

add_custom_target(uninstall
    COMMAND ${CMAKE_COMMAND} -D BUILD_FOLDER=${PROJECT_BINARY_DIR} -P ${PROJECT_SOURCE_DIR}/cmake/uninstall.cmake
    VERBATIM)
