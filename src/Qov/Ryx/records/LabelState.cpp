#include "Qov/Ryx/LabelState.h"

#include "DefaultBody.h"

namespace QovRyx {

LabelBaseState::LabelBaseState() : OpaqueRecord(kTag) {}

LabelState::LabelState() : OpaqueRecord(kTag) {}

TwoDLabelState::TwoDLabelState() : OpaqueRecord(kTag, DefaultBody<LabelBaseState, LabelState>()) {}

UserLabelState::UserLabelState() : OpaqueRecord(kTag, DefaultBody<LabelState, TwoDLabelState>()) {}

TableLabelState::TableLabelState() : OpaqueRecord(kTag, DefaultBody<LabelState>()) {}

TableState::TableState() : OpaqueRecord(kTag, DefaultBody<LabelBaseState, TableLabelState>()) {}

TwoDTableState::TwoDTableState() : OpaqueRecord(kTag, DefaultBody<LabelBaseState, TableState>()) {}

ProbeLabelState::ProbeLabelState() : OpaqueRecord(kTag) {}

ProbeTableState::ProbeTableState()
    : OpaqueRecord(kTag, DefaultBody<TableState, TableLabelState>()) {}

ThreeD_DistanceState::ThreeD_DistanceState() : OpaqueRecord(kTag, DefaultBody<LabelState>()) {}

ThreePointArcState::ThreePointArcState() : OpaqueRecord(kTag, DefaultBody<LabelState>()) {}

MeasurementState::MeasurementState()
    : OpaqueRecord(kTag, DefaultBody<ThreeD_DistanceState, ThreePointArcState>()) {}

}  // namespace QovRyx
