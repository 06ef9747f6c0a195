# What `cmake --install` puts where, in three components: tools, runtime (the shared library) and
# development (headers, static library, what find_package() and pkg-config read).
include(CMakePackageConfigHelpers)

get_property(tools GLOBAL PROPERTY STIGRUZ_TOOLS)
install(TARGETS ${tools}
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)

# Manual pages carry the version; whoever packages them compresses them.
list(TRANSFORM tools APPEND ".1" OUTPUT_VARIABLE pages)
foreach(page ${pages} stigruz.sgn.5)
    configure_file(man/${page}.in man/${page} @ONLY)
    string(REGEX MATCH "[0-9]$" section ${page})
    install(FILES ${PROJECT_BINARY_DIR}/man/${page}
        DESTINATION ${CMAKE_INSTALL_MANDIR}/man${section} COMPONENT tools)
endforeach()

list(TRANSFORM tools PREPEND "completions/" OUTPUT_VARIABLE completions)
install(FILES ${completions}
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT tools)
install(DIRECTORY examples/workflow
    DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples COMPONENT tools USE_SOURCE_PERMISSIONS)
install(FILES docs/workflow.md docs/method.md docs/sgn_check.md
    DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT tools)

install(DIRECTORY lib/src/flib
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development
    FILES_MATCHING PATTERN "*.h")
install(TARGETS flib EXPORT flib
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development)
if(STIGRUZ_SHARED)
    install(TARGETS flib_shared EXPORT flib
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime
        NAMELINK_COMPONENT development)
endif()

set(config_directory ${CMAKE_INSTALL_LIBDIR}/cmake/flib)
install(EXPORT flib NAMESPACE flib:: FILE flib-targets.cmake
    DESTINATION ${config_directory} COMPONENT development)
configure_package_config_file(cmake/flib-config.cmake.in ${PROJECT_BINARY_DIR}/flib-config.cmake
    INSTALL_DESTINATION ${config_directory})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/flib-config-version.cmake
    COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/flib-config.cmake ${PROJECT_BINARY_DIR}/flib-config-version.cmake
    DESTINATION ${config_directory} COMPONENT development)

# Relative to where it lies, so that the whole tree may be installed or moved elsewhere later.
file(RELATIVE_PATH prefix_from_pc /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
configure_file(cmake/flib.pc.in flib.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/flib.pc
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
