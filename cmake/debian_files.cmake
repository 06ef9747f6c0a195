# Run by cpack on the gathered files of the packages, before they are packed: what Debian wants
# elsewhere or otherwise than `cmake --install` does it.
if(NOT CPACK_GENERATOR STREQUAL "DEB")
    return()
endif()

function(compress file)
    execute_process(COMMAND gzip -9nf ${file} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)

# The licence as Debian's copyright files quote it: its paragraphs, indented.
file(READ ${CPACK_STIGRUZ_SOURCE}/LICENSE licence)
string(REGEX MATCH "Copyright \\(c\\) ([^\n]*)" notice "${licence}")
set(holders ${CMAKE_MATCH_1})
string(REGEX REPLACE "^.*${holders}\n\n" "" licence "${licence}")
string(STRIP "${licence}" licence)
string(REPLACE "\n" "\n " licence " ${licence}")
string(REGEX REPLACE "\n +\n" "\n .\n" licence "${licence}")

set(packages ${CPACK_STIGRUZ_PACKAGES})
while(packages)
    list(POP_FRONT packages component package)
    set(root ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/${component})
    if(NOT EXISTS ${root})
        continue()
    endif()
    file(GLOB pages ${root}/usr/share/man/man*/*.[1-9])
    foreach(page ${pages})
        compress(${page})
    endforeach()
    if(EXISTS ${root}/usr/share/zsh)
        file(RENAME ${root}/usr/share/zsh/site-functions ${root}/usr/share/zsh/vendor-completions)
    endif()

    set(documents ${root}/usr/share/doc/${package})
    file(WRITE ${documents}/changelog
        "${CPACK_PACKAGE_NAME} (${CPACK_PACKAGE_VERSION}) unstable; urgency=medium\n\n"
        "  * See CHANGELOG.md of this release.\n\n"
        " -- ${CPACK_PACKAGE_CONTACT}  ${date}\n")
    compress(${documents}/changelog)
    file(REMOVE ${documents}/LICENSE)
    file(WRITE ${documents}/copyright
        "Format: https://www.debian.org/doc/packaging-manuals/copyright-format/1.0/\n"
        "Upstream-Name: ${CPACK_PACKAGE_NAME}\n\n"
        "Files: *\nCopyright: ${holders}\nLicense: BSD-3-Clause\n${licence}\n")
endwhile()
