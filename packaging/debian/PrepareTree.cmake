# Run by cpack on the tree that it is about to pack: adds and compresses what Debian asks for.
set(root ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/usr)
set(documents ${root}/share/doc/${CPACK_PACKAGE_NAME})
file(MAKE_DIRECTORY ${documents})
file(COPY ${CPACK_RYXMERGE_CHANGELOG} ${CPACK_RYXMERGE_COPYRIGHT} DESTINATION ${documents}
     FILE_PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)

file(GLOB manuals ${root}/share/man/man*/*.[1-9])
execute_process(COMMAND gzip -9nf ${documents}/changelog ${manuals} COMMAND_ERROR_IS_FATAL ANY)
file(GLOB archives ${root}/lib/*.a)
execute_process(COMMAND strip --strip-debug --enable-deterministic-archives ${archives}
                COMMAND_ERROR_IS_FATAL ANY)
