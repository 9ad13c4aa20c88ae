# Run by cpack on the finished packages: removes the maintainer scripts that cpack writes for
# shared libraries, because the trigger of the package already calls ldconfig.
find_program(dpkgDeb dpkg-deb REQUIRED)
foreach(package IN LISTS CPACK_PACKAGE_FILES)
  set(tree ${package}.tree)
  execute_process(COMMAND ${dpkgDeb} -R ${package} ${tree} COMMAND_ERROR_IS_FATAL ANY)
  if(EXISTS ${tree}/DEBIAN/postinst)
    file(REMOVE ${tree}/DEBIAN/postinst ${tree}/DEBIAN/postrm)
    execute_process(COMMAND ${dpkgDeb} --root-owner-group -b ${tree} ${package}
                    OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
  endif()
  file(REMOVE_RECURSE ${tree})
endforeach()
