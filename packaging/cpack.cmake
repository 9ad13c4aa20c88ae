# The Debian package: `cpack -G DEB`, or scripts/package.sh, which checks it too.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME ryxmerge)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "The RyxMerge developers <ryxmerge@packages.example>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION science)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "bash-completion, cmake, g++, pkg-config, zlib1g-dev")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "merge ryx model files")
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
"A ryx model file holds a model for 3D viewing of simulation and design data.
The program RyxMerge merges several of them into one, and adds saved view
points to a model; the program ryx looks into model files.

The package also holds the library that both are made of, with its headers,
for programs that merge or read models themselves.")

set(debianFiles ${CMAKE_CURRENT_SOURCE_DIR}/debian)

# What the users of the library depend on, and what keeps the linker's cache up to date: CPack
# writes scripts for the second, but Debian asks for a trigger.
configure_file(${debianFiles}/shlibs.in shlibs @ONLY)
set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA ${CMAKE_CURRENT_BINARY_DIR}/shlibs ${debianFiles}/triggers)

# Debian wants these compressed, as it wants the manual pages.
configure_file(${debianFiles}/changelog.in changelog @ONLY)
set(CPACK_PRE_BUILD_SCRIPTS ${debianFiles}/PrepareTree.cmake)
set(CPACK_RYXMERGE_CHANGELOG ${CMAKE_CURRENT_BINARY_DIR}/changelog)
set(CPACK_RYXMERGE_COPYRIGHT ${debianFiles}/copyright)

include(CPack)
