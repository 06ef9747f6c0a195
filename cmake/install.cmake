# What `cmake --install` puts where, in components: tools, runtime (the shared library),
# development (headers, static libraries, what find_package() and pkg-config read) and python.
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

# Completion, where bash, zsh and fish look for it.
list(TRANSFORM tools PREPEND "completions/" OUTPUT_VARIABLE completions)
install(FILES ${completions}
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT tools)
install(FILES completions/zsh/_stigruz
    DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/site-functions COMPONENT tools)
list(TRANSFORM tools REPLACE "(.+)" "completions/fish/\\1.fish" OUTPUT_VARIABLE completions)
install(FILES ${completions}
    DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d COMPONENT tools)
install(FILES completions/fish/__stigruz_options.fish
    DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_functions.d COMPONENT tools)

# The pages lie to each other as they do here, so that the links between them hold.
install(FILES README.md CHANGELOG.md CONTRIBUTING.md LICENSE
    DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT tools)
install(DIRECTORY docs
    DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT tools FILES_MATCHING PATTERN "*.md" PATTERN "*.svg")
install(DIRECTORY examples
    DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT tools USE_SOURCE_PERMISSIONS)

# The header libraries' licences go along with the programs that hold their code.
if(TARGET tools_common)
    foreach(library libcli11-dev libeigen3-dev nlohmann-json3-dev)
        install(FILES /usr/share/doc/${library}/copyright OPTIONAL
            DESTINATION ${CMAKE_INSTALL_DOCDIR}/third_party RENAME ${library} COMPONENT tools)
    endforeach()
endif()

if(build_python)
    include(cmake/python_install.cmake)
endif()

install(DIRECTORY lib/src/flib lib/src/sgn lib/former/flib
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development
    FILES_MATCHING PATTERN "*.h" PATTERN detail EXCLUDE)
set(libraries flib sgn_job)
if(TARGET sgn)
    list(APPEND libraries sgn)
endif()
install(TARGETS ${libraries} EXPORT flib
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
set(packages ${PROJECT_BINARY_DIR}/flib.pc)
if(TARGET sgn)
    configure_file(cmake/sgn.pc.in sgn.pc @ONLY)
    list(APPEND packages ${PROJECT_BINARY_DIR}/sgn.pc)
endif()
install(FILES ${packages}
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
