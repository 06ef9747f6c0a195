# Where Python finds the module depends on the prefix, which may be told as late as by
# `cmake --install --prefix`: Debian has directories of its own below /usr and /usr/local.
set(python_version ${Python_VERSION_MAJOR}.${Python_VERSION_MINOR})
set(STIGRUZ_PYTHON_DIRECTORY "" CACHE STRING "Where the Python module is installed, below the prefix; empty: where Python looks")
install(CODE "
    set(directory \"${STIGRUZ_PYTHON_DIRECTORY}\")
    if(directory STREQUAL \"\")
        set(directory lib/python${python_version}/site-packages)
        if(EXISTS /usr/lib/python3/dist-packages AND \"${Python_EXECUTABLE}\" MATCHES \"^/usr/bin/\")
            if(CMAKE_INSTALL_PREFIX MATCHES \"/usr/?\$\")
                set(directory lib/python3/dist-packages)
            elseif(CMAKE_INSTALL_PREFIX MATCHES \"/usr/local/?\$\")
                set(directory lib/python${python_version}/dist-packages)
            endif()
        endif()
    endif()
    file(INSTALL \"${PROJECT_BINARY_DIR}/python/stigruz\" DESTINATION \"\${CMAKE_INSTALL_PREFIX}/\${directory}\"
        PATTERN __pycache__ EXCLUDE)
    if(CMAKE_INSTALL_DO_STRIP)
        file(GLOB modules \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/\${directory}/stigruz/_core.*.so\")
        execute_process(COMMAND \"${CMAKE_STRIP}\" --strip-unneeded \${modules})
    endif()" COMPONENT python)
