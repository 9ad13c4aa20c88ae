#include <array>
#include <cstring>
#include <iterator>
#include <utility>

#include "Qov/Ryx/BlockVersionedIo.h"
#include "Qov/Ryx/FileVersionScope.h"
#include "Qov/Ryx/MaterialValues.h"
#include "Qov/Ryx/ModifierInfo.h"
#include "Qov/Ryx/Sequencer.h"
#include "Qov/Ryx/ViewPoint.h"
#include "Target.h"

/// Reads one record: type: u8 | version of the file: u8 | bytes. Whatever is accepted is written
/// and read again without a change.
namespace {

using namespace Qov::Fuzz;

constexpr std::array kVersions = {"0.1", "0.1a", "0.1b", "0.2", "0.3", "0.4", "0.5",
                                  "0.6", "0.7",  "1.0",  "1.1", "1.2", "1.3"};

QovJbf::Block MakeBlock(const std::uint8_t* bytes, std::size_t size) {
  QovJbf::Block block;
  block.AllocateAdditionalMemory(size + 1);
  block.Put(bytes, static_cast<std::uint32_t>(size));
  block.SetPosition(0);
  return block;
}

bool HaveSameBytes(const QovJbf::Block& a, const QovJbf::Block& b) {
  return a.GetSize() == b.GetSize() &&
         (a.GetSize() == 0 || std::memcmp(a.GetData(), b.GetData(), a.GetSize()) == 0);
}

template <class Record>
void ReadRecord(const char* version, const std::uint8_t* bytes, std::size_t size) {
  QovJbf::Block input = MakeBlock(bytes, size);
  Record record;
  {
    const QovRyx::FileVersionScope scope(version);
    CopyFromBlock(input, record);
  }
  QovJbf::Block written;
  CopyToBlock(written, record);
  written.SetPosition(0);
  Record again;
  CopyFromBlock(written, again);
  QovJbf::Block writtenAgain;
  CopyToBlock(writtenAgain, again);
  Require(HaveSameBytes(written, writtenAgain), "a record is written and read without a change");
}

using Reader = void (*)(const char*, const std::uint8_t*, std::size_t);

template <class... Records>
constexpr std::array<Reader, sizeof...(Records)> MakeReaders() {
  return {&ReadRecord<Records>...};
}

constexpr auto kReaders =
    MakeReaders<QovRyx::ViewPoint, QovRyx::ViewState, QovRyx::HiddenState, QovRyx::UsrEntityData,
                QovRyx::XplodeState, QovRyx::MiscState, QovRyx::SectionState,
                QovRyx::TransformState, QovRyx::PickNMoveState, QovRyx::PickXForm,
                QovRyx::MultiCAEState, QovRyx::CAEState, QovRyx::CAEEigenVectorAnimationState,
                QovRyx::CAEVectorPlotState, QovRyx::CAEContourLineMgrState,
                QovRyx::CAEXYPlotMgrState, QovRyx::CAEXYPlotV1CurveState, QovRyx::MaterialValues,
                QovRyx::ModifierInfo, QovRyx::SequencerData, QovRyx::Sequence, QovRyx::Action,
                QovRyx::SupportAction, QovRyx::MoveAction, QovRyx::RotateAction,
                QovRyx::TransformAction, QovRyx::ApplyColorAction, QovRyx::ApplyViewPointAction,
                QovRyx::PlayAudioAction, QovRyx::InvalidAction>();

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 2) return 0;
  const Reader reader = kReaders[data[0] % kReaders.size()];
  const char* version = kVersions[data[1] % kVersions.size()];
  Accepts([&] { reader(version, data + 2, size - 2); });
  return 0;
}
