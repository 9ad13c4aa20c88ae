# The tests of the versioned records, for the model library's test program.
set(QOV_RECORD_TESTS
    records/EveryRecordTest.cpp
    records/FrameTest.cpp
    records/RecordBytesTest.cpp
    records/SequencerTest.cpp)
