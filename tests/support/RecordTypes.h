#pragma once

#include "Qov/Ryx/MaterialValues.h"
#include "Qov/Ryx/ModifierInfo.h"
#include "Qov/Ryx/Sequencer.h"
#include "Qov/Ryx/ViewPoint.h"

namespace Qov::Test {

/// `List` with all records that have a field list as its arguments.
template <template <class...> class List>
using EveryRecordIn =
    List<QovRyx::ViewPoint, QovRyx::ViewState, QovRyx::HiddenState, QovRyx::UsrEntityData,
         QovRyx::XplodeState, QovRyx::MiscState, QovRyx::SectionState, QovRyx::TransformState,
         QovRyx::PickNMoveState, QovRyx::PickXForm, QovRyx::MultiCAEState, QovRyx::CAEState,
         QovRyx::CAEEigenVectorAnimationState, QovRyx::CAEVectorPlotState,
         QovRyx::CAEContourLineMgrState, QovRyx::CAEXYPlotMgrState, QovRyx::CAEXYPlotV1CurveState,
         QovRyx::MaterialValues, QovRyx::ModifierInfo, QovRyx::SequencerData, QovRyx::Sequence,
         QovRyx::Action, QovRyx::SupportAction, QovRyx::MoveAction, QovRyx::RotateAction,
         QovRyx::TransformAction, QovRyx::ApplyColorAction, QovRyx::ApplyViewPointAction,
         QovRyx::PlayAudioAction, QovRyx::InvalidAction>;

}  // namespace Qov::Test
