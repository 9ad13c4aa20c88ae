# qov_module(NAME HEADERS header... SOURCES source... DEPENDS target...)
#
# One static library a module. Its public headers live under include/ and must compile alone,
# which the target all_verify_interface_header_sets checks.
function(qov_module name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "HEADERS;SOURCES;DEPENDS")
  list(TRANSFORM arg_HEADERS PREPEND ${PROJECT_SOURCE_DIR}/include/Qov/)
  add_library(${name} STATIC ${arg_SOURCES})
  target_sources(${name} PUBLIC FILE_SET HEADERS BASE_DIRS ${PROJECT_SOURCE_DIR}/include
                                FILES ${arg_HEADERS})
  # What is not marked with QOV_EXPORT stays inside the shared library made of all modules.
  set_target_properties(${name} PROPERTIES CXX_VISIBILITY_PRESET hidden
                                           VISIBILITY_INLINES_HIDDEN ON)
  set_property(GLOBAL APPEND PROPERTY QOV_MODULES ${name})
  if(RYXMERGE_SANITIZE)
    target_compile_options(${name} PRIVATE -O1)  # the tests are kept quick to build instead
  endif()
  target_link_libraries(${name} PUBLIC qov_options ${arg_DEPENDS})
endfunction()
