# The Debian packages, one for each component of install.cmake. Build them with scripts/package.sh,
# which uses the prefix /usr and checks the packages, or with `cpack -G DEB`.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME ryxmerge)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "The RyxMerge developers <ryxmerge@packages.example>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL programs runtime development)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(debianFiles ${CMAKE_CURRENT_SOURCE_DIR}/debian)
set(library libryxmerge${PROJECT_VERSION_MAJOR})

set(CPACK_DEBIAN_PROGRAMS_PACKAGE_NAME ryxmerge)
set(CPACK_DEBIAN_PROGRAMS_PACKAGE_SECTION science)
set(CPACK_DEBIAN_PROGRAMS_PACKAGE_SUGGESTS "bash-completion, libryxmerge-dev")
set(CPACK_COMPONENT_PROGRAMS_DESCRIPTION "merge, inspect and compare ryx model files
A ryx model file holds a model for 3D viewing of simulation and design data.
The program RyxMerge merges several of them into one, and adds saved view
points to a model. The program ryx lists, checks and compares model files.")

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME ${library})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION "library for ryx model files (shared library)
A ryx model file holds a model for 3D viewing of simulation and design data.
This library reads, merges and writes them.")
# dpkg-shlibdeps finds the package of the library in the first file. The second file updates the
# linker's cache without a maintainer script.
configure_file(${debianFiles}/shlibs.in shlibs @ONLY)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA
    ${CMAKE_CURRENT_BINARY_DIR}/shlibs ${debianFiles}/triggers)

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libryxmerge-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${library} (= ${PROJECT_VERSION}), zlib1g-dev")
if(RYXMERGE_WITH_LIBDEFLATE)
  string(APPEND CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS ", libdeflate-dev")
endif()
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SUGGESTS "cmake, g++, pkg-config")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "library for ryx model files (development files)
A ryx model file holds a model for 3D viewing of simulation and design data.
This package contains the headers and the static library for programs that
read, merge or write such files, and the files for CMake and pkg-config.")

configure_file(${debianFiles}/changelog.in changelog @ONLY)
set(CPACK_PRE_BUILD_SCRIPTS ${debianFiles}/PrepareTree.cmake)
set(CPACK_POST_BUILD_SCRIPTS ${debianFiles}/DropScripts.cmake)
set(CPACK_RYXMERGE_CHANGELOG ${CMAKE_CURRENT_BINARY_DIR}/changelog)
set(CPACK_RYXMERGE_COPYRIGHT ${debianFiles}/copyright)
set(CPACK_RYXMERGE_PACKAGES programs ryxmerge runtime ${library} development libryxmerge-dev)

include(CPack)
