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
  target_link_libraries(${name} PUBLIC qov_options ${arg_DEPENDS})
endfunction()
