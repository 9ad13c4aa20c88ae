# qov_module(NAME HEADERS header... SOURCES source... DEPENDS target...)
#
# Adds a module as a static library. HEADERS are its public headers under include/, which are
# installed. Each must compile alone; the target all_verify_interface_header_sets checks it. Headers
# that are not installed are next to their sources; other modules include them by their path, for
# example "container/LoadLimit.h".
function(qov_module name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "HEADERS;SOURCES;DEPENDS")
  list(TRANSFORM arg_HEADERS PREPEND ${PROJECT_SOURCE_DIR}/include/Qov/)
  add_library(${name} STATIC ${arg_SOURCES})
  target_sources(${name} PUBLIC FILE_SET HEADERS BASE_DIRS ${PROJECT_SOURCE_DIR}/include
                                FILES ${arg_HEADERS})
  target_include_directories(${name} PUBLIC ${PROJECT_SOURCE_DIR})
  # The shared library of all modules exports only what is marked with QOV_EXPORT.
  set_target_properties(${name} PROPERTIES CXX_VISIBILITY_PRESET hidden
                                           VISIBILITY_INLINES_HIDDEN ON)
  set_property(GLOBAL APPEND PROPERTY QOV_MODULES ${name})
  # -O1 makes sanitized modules faster. The tests stay at -O0, because they take longer to build
  # than to run.
  if(RYXMERGE_SANITIZE)
    target_compile_options(${name} PRIVATE -O1)
  endif()
  target_link_libraries(${name} PUBLIC qov_options ${arg_DEPENDS})
  qov_join_sources(MODULES ${name})
endfunction()
