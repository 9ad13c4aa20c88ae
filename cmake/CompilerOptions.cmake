# The compiler flags of every target of the project, on one INTERFACE target.
add_library(qov_options INTERFACE)
target_compile_features(qov_options INTERFACE cxx_std_20)
target_compile_options(qov_options INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion)

if(RYXMERGE_WARNINGS_AS_ERRORS)
  target_compile_options(qov_options INTERFACE -Werror)
endif()

if(RYXMERGE_SANITIZE)
  target_compile_options(qov_options INTERFACE -fsanitize=${RYXMERGE_SANITIZE}
                                               -fno-sanitize-recover=all -fno-omit-frame-pointer)
  # The loader would adjust millions of addresses at each start of a position-independent program.
  target_link_options(qov_options INTERFACE
    -fsanitize=${RYXMERGE_SANITIZE}
    $<$<STREQUAL:$<TARGET_PROPERTY:TYPE>,EXECUTABLE>:-no-pie>)
endif()

if(RYXMERGE_COVERAGE)
  target_compile_options(qov_options INTERFACE --coverage -fprofile-update=atomic)
  target_link_options(qov_options INTERFACE --coverage)
endif()

if(RYXMERGE_BUILD_FUZZERS)
  target_compile_options(qov_options INTERFACE -fsanitize=fuzzer-no-link)
endif()
