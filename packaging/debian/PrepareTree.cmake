# Run by cpack on the trees that it packs, one for each component: adds the files that Debian
# requires in every package and compresses those that Debian requires to be compressed.
function(prepare root package)
  set(documents ${root}/share/doc/${package})
  file(MAKE_DIRECTORY ${documents})
  file(COPY ${CPACK_RYXMERGE_CHANGELOG} ${CPACK_RYXMERGE_COPYRIGHT} DESTINATION ${documents}
       FILE_PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
  file(GLOB manuals ${root}/share/man/man*/*.[1-9])
  execute_process(COMMAND gzip -9nf ${documents}/changelog ${manuals} COMMAND_ERROR_IS_FATAL ANY)
  file(GLOB_RECURSE archives ${root}/lib/*.a)
  if(archives)
    execute_process(COMMAND strip --strip-debug --enable-deterministic-archives ${archives}
                    COMMAND_ERROR_IS_FATAL ANY)
  endif()
endfunction()

set(packages ${CPACK_RYXMERGE_PACKAGES})
while(packages)
  list(POP_FRONT packages component package)
  prepare(${CPACK_TEMPORARY_INSTALL_DIRECTORY}/${component}/usr ${package})
endwhile()
