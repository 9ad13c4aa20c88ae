# qov_join_sources(KIND TARGET)
#
# KIND is TESTS or MODULES. If RYXMERGE_JOIN_SOURCES is that kind or ALL, eight sources of the target
# are compiled at a time. That takes about half of the processor time, because headers are parsed
# once and templates are instantiated once. Names in unnamed namespaces must then differ between
# these sources. Macros make the names different that many sources have.
function(qov_join_sources kind target)
  if(NOT RYXMERGE_JOIN_SOURCES STREQUAL kind AND NOT RYXMERGE_JOIN_SOURCES STREQUAL ALL)
    return()
  endif()
  string(CONCAT rename "#undef QOV_JOIN\n#undef QOV_NAME_IN\n"
                       "#define QOV_JOIN(name, id) name##_##id\n"
                       "#define QOV_NAME_IN(name, id) QOV_JOIN(name, id)\n")
  foreach(name IN ITEMS kSource kFooter)
    string(APPEND rename "#undef ${name}\n#define ${name} QOV_NAME_IN(${name}, QOV_SOURCE_ID)\n")
  endforeach()
  set_target_properties(${target} PROPERTIES
    UNITY_BUILD ON
    UNITY_BUILD_BATCH_SIZE 8
    UNITY_BUILD_UNIQUE_ID QOV_SOURCE_ID
    UNITY_BUILD_CODE_BEFORE_INCLUDE "${rename}")
  # g++ takes a source that is included for a header and warns of members of unnamed types.
  target_compile_options(${target} PRIVATE $<$<CXX_COMPILER_ID:GNU>:-Wno-subobject-linkage>)
endfunction()
