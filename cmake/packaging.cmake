# Debian packages: `cpack -G DEB` in a build directory that was configured with
# CMAKE_INSTALL_PREFIX=/usr. scripts/package.sh does that, and makes the tarball of static tools.
set(CPACK_PACKAGE_NAME stigruz)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")  # each package has its own, the first line below
set(CPACK_PACKAGE_CONTACT "stigruz maintainers <maintainers@stigruz.invalid>" CACHE STRING
    "Who answers for the packages: NAME <ADDRESS>")
set(CPACK_PACKAGE_VENDOR stigruz)
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_STRIP_FILES ON)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_GENERATOR DEB)

# The components of install.cmake, a package each.
set(runtime_package libflib${PROJECT_VERSION_MAJOR})
set(CPACK_COMPONENTS_ALL tools)
if(STIGRUZ_SHARED)
    list(APPEND CPACK_COMPONENTS_ALL runtime development)
endif()
if(build_python)
    list(APPEND CPACK_COMPONENTS_ALL python)
endif()
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME stigruz)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION science)
set(CPACK_DEBIAN_TOOLS_DESCRIPTION
"signs and derivatives of excited-state transition dipoles
The sign of a transition dipole is arbitrary and jumps from one
quantum-chemistry job to the next, so that a numerical derivative of it comes
out as garbage. These tools make a set of displaced Gaussian jobs from one
input, give every job the sign of the reference, tell which results deserve
doubt, follow states through crossings, and make derivatives of dipoles and
forces for vibronic programs and viewers. One more shows what files of many
quantum-chemistry programs hold.")

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME ${runtime_package})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
# Who links with the library depends on this package; the linker's cache follows the installation.
file(WRITE ${PROJECT_BINARY_DIR}/debian/shlibs
    "libflib ${PROJECT_VERSION_MAJOR} ${runtime_package} (>= ${PROJECT_VERSION})\n")
file(WRITE ${PROJECT_BINARY_DIR}/debian/triggers "activate-noawait ldconfig\n")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA
    ${PROJECT_BINARY_DIR}/debian/shlibs ${PROJECT_BINARY_DIR}/debian/triggers)
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION
"readers of quantum-chemistry output (shared library)
Routines that find atoms, geometries, masses, forces, orbitals and excitation
amplitudes in the text files of Gaussian, ORCA, Q-Chem, GAMESS (US), NWChem,
TURBOMOLE and other quantum-chemistry programs.
.
This package holds the shared library.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libflib-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${runtime_package} (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION
"readers of quantum-chemistry output (development files)
Routines that find atoms, geometries, masses, forces, orbitals and excitation
amplitudes in the text files of Gaussian, ORCA, Q-Chem, GAMESS (US), NWChem,
TURBOMOLE and other quantum-chemistry programs.
.
This package holds the headers and the static library. CMake's find_package()
and pkg-config find them.")

if(build_python)
    math(EXPR next_python "${Python_VERSION_MINOR} + 1")
    set(CPACK_DEBIAN_PYTHON_PACKAGE_NAME python3-stigruz)
    set(CPACK_DEBIAN_PYTHON_PACKAGE_SECTION python)
    set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS "python3 (>= ${Python_VERSION_MAJOR}.${Python_VERSION_MINOR}), \
python3 (<< ${Python_VERSION_MAJOR}.${next_python}), python3-numpy")
    set(CPACK_DEBIAN_PYTHON_PACKAGE_SUGGESTS "python3-ase, python3-matplotlib, python3-tqdm")
    set(CPACK_DEBIAN_PYTHON_DESCRIPTION
"signs and derivatives of excited-state transition dipoles (Python 3)
Outputs of quantum-chemistry programs as numpy arrays; jobs of excited states
with their transition densities; states followed through sets of displaced
geometries; derivatives of transition dipoles and forces with uncertainties,
sum rules that see wrong signs, and normal modes, from Gaussian jobs or from
any program's dipoles.")
endif()

# What Debian asks of every package's files is done when they are gathered, of its scripts afterwards.
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/debian_files.cmake)
set(CPACK_POST_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/debian_scripts.cmake)
set(CPACK_STIGRUZ_SOURCE ${PROJECT_SOURCE_DIR})
set(CPACK_STIGRUZ_PACKAGES "tools;stigruz;runtime;${runtime_package};development;libflib-dev;python;python3-stigruz")
include(CPack)
