include(CMakePackageConfigHelpers)

# Three components: programs, the shared library (runtime), and the files for building other
# programs with it (development).
install(TARGETS RyxMerge ryx COMPONENT programs)
install(TARGETS qov_shared EXPORT RyxMergeTargets
        LIBRARY COMPONENT runtime NAMELINK_COMPONENT development
        FILE_SET HEADERS COMPONENT development)
# A separate export, because only the static library needs other libraries when it is linked.
install(TARGETS qov_static EXPORT RyxMergeStaticTargets
        ARCHIVE COMPONENT development FILE_SET HEADERS COMPONENT development)

# find_package(RyxMerge)
set(packageDirectory ${CMAKE_INSTALL_LIBDIR}/cmake/RyxMerge)
configure_package_config_file(RyxMergeConfig.cmake.in RyxMergeConfig.cmake
                              INSTALL_DESTINATION ${packageDirectory})
write_basic_package_version_file(RyxMergeConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/RyxMergeConfig.cmake
              ${CMAKE_CURRENT_BINARY_DIR}/RyxMergeConfigVersion.cmake
        DESTINATION ${packageDirectory} COMPONENT development)
if(RYXMERGE_WITH_LIBDEFLATE)
  install(FILES ${PROJECT_SOURCE_DIR}/cmake/FindLibdeflate.cmake DESTINATION ${packageDirectory}
          COMPONENT development)
endif()
foreach(export IN ITEMS RyxMergeTargets RyxMergeStaticTargets)
  install(EXPORT ${export} NAMESPACE RyxMerge:: DESTINATION ${packageDirectory}
          COMPONENT development)
endforeach()

# pkg-config derives the prefix from the place of the file.
file(RELATIVE_PATH pcPrefix /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
set(pcRequires zlib)
if(RYXMERGE_WITH_LIBDEFLATE)
  string(APPEND pcRequires ", libdeflate")
endif()
configure_file(RyxMerge.pc.in RyxMerge.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/RyxMerge.pc
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)

# Puts the version into the footer of the manual pages.
foreach(page IN ITEMS RyxMerge.1 ryx.1)
  configure_file(${PROJECT_SOURCE_DIR}/docs/man/${page} ${page} @ONLY)
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${page}
          DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT programs)
endforeach()
set(documents ${CMAKE_INSTALL_DATAROOTDIR}/doc/ryxmerge)
install(FILES ${PROJECT_SOURCE_DIR}/README.md ${PROJECT_SOURCE_DIR}/CHANGELOG.md ${PROJECT_SOURCE_DIR}/docs/format.md
              ${PROJECT_SOURCE_DIR}/docs/json.md
        DESTINATION ${documents} COMPONENT programs)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/docs/json ${PROJECT_SOURCE_DIR}/examples
        DESTINATION ${documents} COMPONENT programs)

# bash-completion looks for a file with the name of the command.
file(GLOB completions CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/completions/*.bash)
foreach(completion IN LISTS completions)
  get_filename_component(command ${completion} NAME_WLE)
  install(FILES ${completion} RENAME ${command}
          DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT programs)
endforeach()
install(FILES ${PROJECT_SOURCE_DIR}/completions/ryx.zsh RENAME _ryx
        DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions COMPONENT programs)
install(FILES ${PROJECT_SOURCE_DIR}/completions/ryx.fish
        DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d COMPONENT programs)
