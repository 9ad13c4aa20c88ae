# cmake -D BUILD_DIR=... -D WORK_DIR=... -D SOURCE_DIR=... -D CXX=...
#       -D GENERATOR=... -D MAKE_PROGRAM=... -P InstallTest.cmake
#
# Installs into a separate prefix, builds the examples with that prefix only, and compares their
# output. The examples use the generator of this build, because make, the default of CMake, may be
# missing.
set(prefix ${WORK_DIR}/prefix)
file(REMOVE_RECURSE ${WORK_DIR})
file(MAKE_DIRECTORY ${WORK_DIR})

function(run)
  execute_process(COMMAND ${ARGN} WORKING_DIRECTORY ${WORK_DIR} RESULT_VARIABLE status
                  OUTPUT_VARIABLE output ERROR_VARIABLE errors)
  if(NOT status EQUAL 0)
    string(REPLACE ";" " " command "${ARGN}")
    message(FATAL_ERROR "Status ${status}: ${command}\n${output}${errors}")
  endif()
  set(output "${output}" PARENT_SCOPE)
endfunction()

function(expect_file name)
  file(GLOB found ${prefix}/${name})
  if(NOT found)
    message(SEND_ERROR "Not installed: ${name}")
  endif()
endfunction()

# expect_output(NAME COMMAND argument...): compares the output with expected/NAME.txt.
function(expect_output name)
  run(${ARGN})
  file(READ ${SOURCE_DIR}/tests/install/expected/${name}.txt expected)
  if(NOT output STREQUAL expected)
    file(WRITE ${WORK_DIR}/${name}.txt "${output}")
    message(SEND_ERROR "The output of ${name} differs from expected/${name}.txt; see ${WORK_DIR}/${name}.txt:\n${output}")
  endif()
endfunction()

function(build name)
  run(${CMAKE_COMMAND} -G ${GENERATOR} -S ${SOURCE_DIR}/${name} -B ${WORK_DIR}/${name}
      -D CMAKE_MAKE_PROGRAM=${MAKE_PROGRAM} -D CMAKE_PREFIX_PATH=${prefix}
      -D CMAKE_CXX_COMPILER=${CXX} -D CMAKE_FIND_USE_PACKAGE_REGISTRY=OFF)
  run(${CMAKE_COMMAND} --build ${WORK_DIR}/${name} --parallel 2)
endfunction()

run(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${prefix})
foreach(name IN ITEMS bin/RyxMerge bin/ryx lib*/libRyxMerge.so.1 lib*/libRyxMerge.a
                      share/man/man1/RyxMerge.1 share/man/man1/ryx.1
                      share/bash-completion/completions/RyxMerge share/zsh/vendor-completions/_ryx
                      share/fish/vendor_completions.d/ryx.fish)
  expect_file(${name})
endforeach()

run(${prefix}/bin/ryx sample models)
build(examples/ranges)
expect_output(ranges examples/ranges/ranges models/plate.ryx)
build(examples/merge)
expect_output(merge examples/merge/merge models/plate.ryx models/plate_more_load.ryx merged.ryx)
execute_process(COMMAND examples/merge/merge models/plate.ryx single.ryx
                WORKING_DIRECTORY ${WORK_DIR} RESULT_VARIABLE status ERROR_QUIET)
if(NOT status EQUAL 1 OR EXISTS ${WORK_DIR}/single.ryx)
  message(SEND_ERROR "merge must refuse a single input, but its status is ${status}")
endif()
build(examples/write)
run(examples/write/write strip.ryx)
run(${prefix}/bin/ryx check strip.ryx)
expect_output(write examples/ranges/ranges strip.ryx)
build(tests/install/border)
foreach(library IN ITEMS RyxMerge static)
  expect_output(border tests/install/border/border_${library} models/plate.ryx)
endforeach()

# Builds without CMake.
find_program(pkgConfig NAMES pkg-config pkgconf)
file(GLOB_RECURSE pc ${prefix}/*/RyxMerge.pc)
if(pkgConfig)
  get_filename_component(pcDirectory ${pc} DIRECTORY)
  get_filename_component(libraries ${pcDirectory} DIRECTORY)
  set(ENV{PKG_CONFIG_PATH} ${pcDirectory})
  set(ENV{LD_LIBRARY_PATH} ${libraries})
  run(${pkgConfig} --cflags --libs RyxMerge)
  string(STRIP "${output}" flags)
  separate_arguments(flags UNIX_COMMAND "${flags}")
  run(${CXX} -std=c++20 ${SOURCE_DIR}/examples/ranges/ranges.cpp -o ranges ${flags})
  expect_output(ranges ./ranges models/plate.ryx)
endif()
