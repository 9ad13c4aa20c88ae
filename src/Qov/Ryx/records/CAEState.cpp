#include "Qov/Ryx/CAEState.h"

#include "DefaultBody.h"
#include "Qov/Ryx/LabelState.h"

namespace QovRyx {

CAELegendState::CAELegendState() : OpaqueRecord(kTag) {}

CAEProbeState::CAEProbeState()
    : OpaqueRecord(kTag, DefaultBody<std::vector<ProbeLabelState>, std::vector<ProbeTableState>,
                                     std::vector<TwoDLabelState>, std::vector<TwoDTableState>>()) {}

CAEAnimationState::CAEAnimationState()
    : OpaqueRecord(kTag, DefaultBody<CAEEigenVectorAnimationState>()) {}

CAEXYPlotV1State::CAEXYPlotV1State()
    : OpaqueRecord(kTag, DefaultBody<std::vector<CAEXYPlotV1CurveState>>()) {}

CAEScalarInfo::CAEScalarInfo() : OpaqueRecord(kTag) {}

}  // namespace QovRyx
