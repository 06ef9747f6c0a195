# Run by cpack on the gathered files of the packages, before they are packed: compressed manual
# pages, changelog and copyright.
if(NOT CPACK_GENERATOR STREQUAL "DEB")
    return()
endif()

function(compress file)
    execute_process(COMMAND gzip -9nf ${file} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)
string(TIMESTAMP year "%Y" UTC)
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

    set(documents ${root}/usr/share/doc/${package})
    file(WRITE ${documents}/changelog
        "${CPACK_PACKAGE_NAME} (${CPACK_PACKAGE_VERSION}) unstable; urgency=medium\n\n"
        "  * See CHANGELOG.md of this release.\n\n"
        " -- ${CPACK_PACKAGE_CONTACT}  ${date}\n")
    compress(${documents}/changelog)
    set(licence "No licence is granted by this file.\n")
    if(EXISTS ${CPACK_STIGRUZ_SOURCE}/LICENSE)
        file(READ ${CPACK_STIGRUZ_SOURCE}/LICENSE licence)
    endif()
    file(WRITE ${documents}/copyright
        "${CPACK_PACKAGE_NAME} ${CPACK_PACKAGE_VERSION}\n"
        "Copyright (C) ${year} the authors of ${CPACK_PACKAGE_NAME}\n\n${licence}")
endwhile()
