#pragma once

#include "Qov/Ryx/OpaqueRecord.h"

/// The records of labels, tables and measurements. Their bodies are carried unread.
namespace QovRyx {

struct LabelBaseState : OpaqueRecord {
  static constexpr const char* kName = "QovRyx::LabelBaseState";
  static constexpr const char* kTag = "0.1";
  LabelBaseState();
};

struct LabelState : OpaqueRecord {
  static constexpr const char* kName = "QovRyx::LabelState";
  static constexpr const char* kTag = "0.7";
  LabelState();
};

struct TwoDLabelState : OpaqueRecord {
  static constexpr const char* kName = "QovRyx::TwoDLabelState";
  static constexpr const char* kTag = "0.1";
  TwoDLabelState();
};

struct UserLabelState : OpaqueRecord {
  static constexpr const char* kName = "QovRyx::UserLabelState";
  static constexpr const char* kTag = "0.2";
  UserLabelState();
};

struct TableLabelState : OpaqueRecord {
  static constexpr const char* kName = "QovRyx::TableLabelState";
  static constexpr const char* kTag = "0.2";
  TableLabelState();
};

struct TableState : OpaqueRecord {
  static constexpr const char* kName = "QovRyx::TableState";
  static constexpr const char* kTag = "0.1";
  TableState();
};

struct TwoDTableState : OpaqueRecord {
  static constexpr const char* kName = "QovRyx::TwoDTableState";
  static constexpr const char* kTag = "0.1";
  TwoDTableState();
};

struct ProbeLabelState : OpaqueRecord {
  static constexpr const char* kName = "QovRyx::ProbeLabelState";
  static constexpr const char* kTag = "0.8";
  ProbeLabelState();
};

struct ProbeTableState : OpaqueRecord {
  static constexpr const char* kName = "QovRyx::ProbeTableState";
  static constexpr const char* kTag = "0.1";
  ProbeTableState();
};

struct ThreeD_DistanceState : OpaqueRecord {
  static constexpr const char* kName = "QovRyx::ThreeD_DistanceState";
  static constexpr const char* kTag = "0.1";
  ThreeD_DistanceState();
};

struct ThreePointArcState : OpaqueRecord {
  static constexpr const char* kName = "QovRyx::ThreePointArcState";
  static constexpr const char* kTag = "0.1";
  ThreePointArcState();
};

struct MeasurementState : OpaqueRecord {
  static constexpr const char* kName = "QovRyx::MeasurementState";
  static constexpr const char* kTag = "0.1";
  MeasurementState();
};

}  // namespace QovRyx
