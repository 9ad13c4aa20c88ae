#pragma once

#include "Qov/Export.h"
#include "Qov/Ryx/OpaqueRecord.h"

/// The records of labels, tables and measurements (docs/format.md, "Opaque records"). Their bodies
/// are carried without being read.
namespace QovRyx {

struct QOV_EXPORT LabelBaseState : OpaqueRecord {
  static constexpr const char* kName = "QovRyx::LabelBaseState";
  static constexpr const char* kTag = "0.1";
  LabelBaseState();
};

struct QOV_EXPORT LabelState : OpaqueRecord {
  static constexpr const char* kName = "QovRyx::LabelState";
  static constexpr const char* kTag = "0.7";
  LabelState();
};

struct QOV_EXPORT TwoDLabelState : OpaqueRecord {
  static constexpr const char* kName = "QovRyx::TwoDLabelState";
  static constexpr const char* kTag = "0.1";
  TwoDLabelState();
};

struct QOV_EXPORT UserLabelState : OpaqueRecord {
  static constexpr const char* kName = "QovRyx::UserLabelState";
  static constexpr const char* kTag = "0.2";
  UserLabelState();
};

struct QOV_EXPORT TableLabelState : OpaqueRecord {
  static constexpr const char* kName = "QovRyx::TableLabelState";
  static constexpr const char* kTag = "0.2";
  TableLabelState();
};

struct QOV_EXPORT TableState : OpaqueRecord {
  static constexpr const char* kName = "QovRyx::TableState";
  static constexpr const char* kTag = "0.1";
  TableState();
};

struct QOV_EXPORT TwoDTableState : OpaqueRecord {
  static constexpr const char* kName = "QovRyx::TwoDTableState";
  static constexpr const char* kTag = "0.1";
  TwoDTableState();
};

struct QOV_EXPORT ProbeLabelState : OpaqueRecord {
  static constexpr const char* kName = "QovRyx::ProbeLabelState";
  static constexpr const char* kTag = "0.8";
  ProbeLabelState();
};

struct QOV_EXPORT ProbeTableState : OpaqueRecord {
  static constexpr const char* kName = "QovRyx::ProbeTableState";
  static constexpr const char* kTag = "0.1";
  ProbeTableState();
};

struct QOV_EXPORT ThreeD_DistanceState : OpaqueRecord {
  static constexpr const char* kName = "QovRyx::ThreeD_DistanceState";
  static constexpr const char* kTag = "0.1";
  ThreeD_DistanceState();
};

struct QOV_EXPORT ThreePointArcState : OpaqueRecord {
  static constexpr const char* kName = "QovRyx::ThreePointArcState";
  static constexpr const char* kTag = "0.1";
  ThreePointArcState();
};

struct QOV_EXPORT MeasurementState : OpaqueRecord {
  static constexpr const char* kName = "QovRyx::MeasurementState";
  static constexpr const char* kTag = "0.1";
  MeasurementState();
};

}  // namespace QovRyx
