include(CMakePackageConfigHelpers)

install(TARGETS RyxMerge ryx)
install(TARGETS qov_shared EXPORT RyxMergeTargets FILE_SET HEADERS)
# Apart, because only the static library needs others when it is linked.
install(TARGETS qov_static EXPORT RyxMergeStaticTargets FILE_SET HEADERS)

# find_package(RyxMerge)
set(packageDirectory ${CMAKE_INSTALL_LIBDIR}/cmake/RyxMerge)
configure_package_config_file(RyxMergeConfig.cmake.in RyxMergeConfig.cmake
                              INSTALL_DESTINATION ${packageDirectory})
write_basic_package_version_file(RyxMergeConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/RyxMergeConfig.cmake
              ${CMAKE_CURRENT_BINARY_DIR}/RyxMergeConfigVersion.cmake
        DESTINATION ${packageDirectory})
foreach(export IN ITEMS RyxMergeTargets RyxMergeStaticTargets)
  install(EXPORT ${export} NAMESPACE RyxMerge:: DESTINATION ${packageDirectory})
endforeach()

# pkg-config: the prefix is taken from where the file lies.
file(RELATIVE_PATH pcPrefix /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
configure_file(RyxMerge.pc.in RyxMerge.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/RyxMerge.pc
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

install(FILES ${PROJECT_SOURCE_DIR}/docs/man/RyxMerge.1 ${PROJECT_SOURCE_DIR}/docs/man/ryx.1
        DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)

# bash-completion finds a file by the name of the command.
file(GLOB completions CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/completions/*.bash)
foreach(completion IN LISTS completions)
  get_filename_component(command ${completion} NAME_WLE)
  install(FILES ${completion} RENAME ${command}
          DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
endforeach()
