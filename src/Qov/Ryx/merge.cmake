# The merge operations, on top of the model.
set(QOV_MERGE_HEADERS
  Ryx/FileArrangement.h
  Ryx/InstanceNames.h
  Ryx/MergeEntryPoints.h
  Ryx/RyxMerge.h)
set(QOV_MERGE_SOURCES
  AppendResults.cpp
  FileArrangement.cpp
  InstanceNames.cpp
  MergeEntryPoints.cpp
  MergeSteps.cpp
  MergeSummary.cpp
  RyxMerge.cpp
  ViewCount.cpp)
