# The versioned records of the model library.
set(QOV_RECORD_HEADERS
    Ryx/BlockVersionedIo.h
    Ryx/CAEState.h
    Ryx/LabelState.h
    Ryx/MaterialValues.h
    Ryx/ModifierInfo.h
    Ryx/OpaqueRecord.h
    Ryx/PartState.h
    Ryx/Sequencer.h
    Ryx/ViewPoint.h
    Ryx/ViewState.h)
set(QOV_RECORD_SOURCES
    BlockVersionedIo.cpp
    CAEState.cpp
    LabelState.cpp
    Sequencer.cpp
    ViewPoint.cpp)
