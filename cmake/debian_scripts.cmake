# Run by cpack on the packages it has made. It puts calls of ldconfig into the scripts of a package with
# a shared library; Debian's trigger for that is in the package, so the scripts go.
foreach(package ${CPACK_PACKAGE_FILES})
    if(NOT package MATCHES "/libflib[0-9]+_.*\\.deb$")
        continue()
    endif()
    set(tree ${package}.tree)
    execute_process(COMMAND dpkg-deb --raw-extract ${package} ${tree} COMMAND_ERROR_IS_FATAL ANY)
    file(REMOVE ${tree}/DEBIAN/postinst ${tree}/DEBIAN/postrm)
    execute_process(COMMAND dpkg-deb --root-owner-group --build ${tree} ${package}
        OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
    file(REMOVE_RECURSE ${tree})
endforeach()
