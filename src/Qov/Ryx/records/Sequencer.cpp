#include "Qov/Ryx/Sequencer.h"

#include <type_traits>

#include "Qov/Util/Assert.h"

/// The layout of the actions in a sequencer's record:
///
///   types: vector<u16>   the low 16 bits of the type code of each slot
///   bodies               for each slot in order, the record of its class
///
/// A type without a class also has a record, of which the reader keeps the tag and the body. An
/// InvalidAction that a program has put into the list is written as its type without a record, so
/// such a list cannot be read back. A null slot is written with a record and read as null again.
namespace QovRyx {

namespace {

std::uint16_t StoredType(const BasicAction* action) {
  return static_cast<std::uint16_t>(action == nullptr ? InvalidAction::kType
                                                      : action->ActionType());
}

void WriteBody(QovJbf::Block& block, const BasicAction* action) {
  if (action == nullptr) {
    CopyToBlock(block, InvalidAction());
    return;
  }
  VisitAction(*action, [&block](const auto& concrete) {
    if constexpr (!std::is_same_v<decltype(concrete), const InvalidAction&>) {
      CopyToBlock(block, concrete);
    }
  });
}

template <class T>
std::unique_ptr<BasicAction> ReadAs(QovJbf::Block& block) {
  auto action = std::make_unique<T>();
  CopyFromBlock(block, *action);
  return action;
}

std::unique_ptr<BasicAction> ReadBody(QovJbf::Block& block, std::uint16_t type) {
  switch (type) {
    case RotateAction::kType:
      return ReadAs<RotateAction>(block);
    case MoveAction::kType:
      return ReadAs<MoveAction>(block);
    case TransformAction::kType:
      return ReadAs<TransformAction>(block);
    case ApplyColorAction::kType:
      return ReadAs<ApplyColorAction>(block);
    case ApplyViewPointAction::kType:
      return ReadAs<ApplyViewPointAction>(block);
    case PlayAudioAction::kType:
      return ReadAs<PlayAudioAction>(block);
    default: {
      auto action = std::make_unique<UnknownAction>(type);
      CopyFromBlock(block, *action);
      const bool isEmptySlot = type == StoredType(nullptr) && !action->HasOrigin();
      return isEmptySlot ? nullptr : std::move(action);
    }
  }
}

std::unique_ptr<BasicAction> Clone(const BasicAction& action) {
  std::unique_ptr<BasicAction> clone;
  VisitAction(action, [&clone](const auto& concrete) {
    clone = std::make_unique<std::remove_cvref_t<decltype(concrete)>>(concrete);
  });
  return clone;
}

}  // namespace

UnknownAction::UnknownAction(std::uint16_t type) : mType(type) { QOV_ASSERT(type >= kLeastType); }

ActionList::ActionList(const ActionList& other) {
  mSlots.reserve(other.mSlots.size());
  for (const auto& slot : other.mSlots) mSlots.push_back(slot ? Clone(*slot) : nullptr);
}

ActionList& ActionList::operator=(const ActionList& other) { return *this = ActionList(other); }

}  // namespace QovRyx

namespace QovJbf {

void CopyToBlock(Block& block, const QovRyx::ActionList& actions) {
  std::vector<std::uint16_t> types;
  types.reserve(actions.mSlots.size());
  for (const auto& slot : actions.mSlots) types.push_back(QovRyx::StoredType(slot.get()));
  CopyToBlock(block, types);
  for (const auto& slot : actions.mSlots) QovRyx::WriteBody(block, slot.get());
}

void CopyFromBlock(Block& block, QovRyx::ActionList& actions) {
  std::vector<std::uint16_t> types;
  CopyFromBlock(block, types);
  actions.mSlots.clear();
  for (const std::uint16_t type : types) {
    actions.mSlots.push_back(QovRyx::ReadBody(block, type));
  }
}

}  // namespace QovJbf
