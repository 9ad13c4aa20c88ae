# The tests of the versioned records, for the model library's test program.
set(QOV_RECORD_TESTS
    records/EveryRecordTest.cpp
    records/FrameTest.cpp
    records/RecordBytesTest.cpp
    records/SequencerTest.cpp)
set_property(SOURCE records/RecordBytesTest.cpp PROPERTY COMPILE_DEFINITIONS
             RECORDS_GOLDEN="${CMAKE_CURRENT_LIST_DIR}/golden.txt")
