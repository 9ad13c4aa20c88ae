# The tests of the program ryx and of the library behind it, which become part of test_cli.
set(RYX_CLI_TESTS HostileInputTest.cpp RyxCheckTest.cpp RyxDiffTest.cpp RyxDumpTest.cpp RyxInfoTest.cpp RyxLsTest.cpp RyxPiecesTest.cpp RyxPlanTest.cpp RyxProgramTest.cpp RyxSampleTest.cpp RyxVerifyTest.cpp)
list(TRANSFORM RYX_CLI_TESTS PREPEND ${CMAKE_CURRENT_LIST_DIR}/)

set_property(SOURCE ${RYX_CLI_TESTS} PROPERTY COMPILE_DEFINITIONS
             RYX_PROGRAM="$<TARGET_FILE:ryx>" RYX_GOLDEN_DIR="${CMAKE_CURRENT_LIST_DIR}/golden"
             RYX_DOCS_DIR="${PROJECT_SOURCE_DIR}/docs"
             RYX_COMPLETION="${PROJECT_SOURCE_DIR}/completions/ryx.bash")
cmake_language(DEFER CALL target_link_libraries test_cli PRIVATE qov_tools)
cmake_language(DEFER CALL add_dependencies test_cli ryx)
