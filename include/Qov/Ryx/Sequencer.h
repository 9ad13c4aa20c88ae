#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "Qov/Export.h"
#include "Qov/Ryx/BlockVersionedIo.h"

/// The records of animation sequences: actions, their settings, and named sequences of steps
/// (docs/format.md, "Sequencer"). All values are carried without being used.
namespace QovRyx {

/// An action of a sequencer.
class QOV_EXPORT BasicAction : public RecordOrigin {
 public:
  virtual ~BasicAction() = default;
  /// Returns the type code of the concrete class.
  virtual int ActionType() const = 0;

 protected:
  BasicAction() = default;
  BasicAction(const BasicAction&) = default;
  BasicAction& operator=(const BasicAction&) = default;
};

class QOV_EXPORT RotateAction : public BasicAction {
 public:
  static constexpr int kType = 0;
  static constexpr const char* kTag = "0.1";

  std::array<std::uint32_t, 3> mVector{};
  std::uint32_t mValue = 0;

  int ActionType() const override { return kType; }
  template <class Self, class Walker>
  static void Walk(Self& self, Walker& walk) {
    walk.Rung("0.1").Field("vector", self.mVector).Field("value", self.mValue);
  }
};

class QOV_EXPORT MoveAction : public BasicAction {
 public:
  static constexpr int kType = 1;
  static constexpr const char* kTag = "0.1";

  std::array<std::uint32_t, 3> mVector{};
  std::uint32_t mValue = 0;

  int ActionType() const override { return kType; }
  template <class Self, class Walker>
  static void Walk(Self& self, Walker& walk) {
    walk.Rung("0.1").Field("vector", self.mVector).Field("value", self.mValue);
  }
};

class QOV_EXPORT TransformAction : public BasicAction {
 public:
  static constexpr int kType = 2;
  static constexpr const char* kTag = "0.1";

  std::array<std::uint32_t, 3> mVector{};
  std::array<std::uint32_t, 4> mQuad{};

  int ActionType() const override { return kType; }
  template <class Self, class Walker>
  static void Walk(Self& self, Walker& walk) {
    walk.Rung("0.1").Field("vector", self.mVector).Field("quad", self.mQuad);
  }
};

class QOV_EXPORT ApplyColorAction : public BasicAction {
 public:
  static constexpr int kType = 3;
  static constexpr const char* kTag = "0.1";

  std::vector<std::uint32_t> mValues;

  int ActionType() const override { return kType; }
  template <class Self, class Walker>
  static void Walk(Self& self, Walker& walk) {
    walk.Rung("0.1").Field("values", self.mValues);
  }
};

class QOV_EXPORT ApplyViewPointAction : public BasicAction {
 public:
  static constexpr int kType = 4;
  static constexpr const char* kTag = "0.1";

  std::string mViewPointName;

  int ActionType() const override { return kType; }
  template <class Self, class Walker>
  static void Walk(Self& self, Walker& walk) {
    walk.Rung("0.1").Field("viewPointName", self.mViewPointName);
  }
};

class QOV_EXPORT PlayAudioAction : public BasicAction {
 public:
  static constexpr int kType = 5;
  static constexpr const char* kTag = "0.1";

  std::string mAudio;

  int ActionType() const override { return kType; }
  template <class Self, class Walker>
  static void Walk(Self& self, Walker& walk) {
    walk.Rung("0.1").Field("audio", self.mAudio);
  }
};

/// An action that must not be stored, because a list that holds one cannot be read back.
class QOV_EXPORT InvalidAction : public BasicAction {
 public:
  static constexpr int kType = -1;
  static constexpr const char* kTag = "0.1";

  int ActionType() const override { return kType; }
  template <class Self, class Walker>
  static void Walk(Self& /*self*/, Walker& walk) {
    walk.Rung("0.1");
  }
};

/// An action of an unknown type. Its tag and the bytes of its body are its origin (RecordOrigin)
/// and are written as they were read.
class QOV_EXPORT UnknownAction : public BasicAction {
 public:
  /// The lowest type without a class.
  static constexpr std::uint16_t kLeastType = 6;
  static constexpr const char* kTag = "0.1";

  /// `type` is kLeastType or more.
  explicit UnknownAction(std::uint16_t type = kLeastType);

  int ActionType() const override { return mType; }
  template <class Self, class Walker>
  static void Walk(Self& /*self*/, Walker& walk) {
    walk.Rung("0.1");
  }

 private:
  std::uint16_t mType;
};

/// Calls `visitor` with the action as its concrete class, which lists the fields.
template <class Visitor>
void VisitAction(const BasicAction& action, Visitor&& visitor) {
  switch (action.ActionType()) {
    case RotateAction::kType:
      return visitor(dynamic_cast<const RotateAction&>(action));
    case MoveAction::kType:
      return visitor(dynamic_cast<const MoveAction&>(action));
    case TransformAction::kType:
      return visitor(dynamic_cast<const TransformAction&>(action));
    case ApplyColorAction::kType:
      return visitor(dynamic_cast<const ApplyColorAction&>(action));
    case ApplyViewPointAction::kType:
      return visitor(dynamic_cast<const ApplyViewPointAction&>(action));
    case PlayAudioAction::kType:
      return visitor(dynamic_cast<const PlayAudioAction&>(action));
    case InvalidAction::kType:
      return visitor(dynamic_cast<const InvalidAction&>(action));
    default:
      return visitor(dynamic_cast<const UnknownAction&>(action));
  }
}

/// Owns the actions of a sequencer. A null slot is written as an action of the type 65535 with an
/// empty body. A copy of the list has copies of the actions.
class QOV_EXPORT ActionList {
 public:
  ActionList() = default;
  ActionList(const ActionList& other);
  ActionList(ActionList&&) noexcept = default;
  ActionList& operator=(const ActionList& other);
  ActionList& operator=(ActionList&&) noexcept = default;
  ~ActionList() = default;

  std::vector<std::unique_ptr<BasicAction>> mSlots;
};

/// The matrices by which an action is applied.
struct SupportAction : RecordOrigin {
  static constexpr const char* kTag = "0.1";

  std::array<std::uint32_t, 9> mMatrix1{};
  std::array<std::uint32_t, 12> mMatrix2{};
  std::uint32_t mValue1 = 0;
  std::uint8_t mFlag = 0;
  std::uint32_t mValue2 = 0;

  template <class Self, class Walker>
  static void Walk(Self& self, Walker& walk) {
    walk.Rung("0.1")
        .Field("matrix1", self.mMatrix1)
        .Field("matrix2", self.mMatrix2)
        .Field("value1", self.mValue1)
        .Field("flag", self.mFlag)
        .Field("value2", self.mValue2);
  }

  friend bool operator==(const SupportAction&, const SupportAction&) = default;
};

/// The settings of an action.
struct Action : RecordOrigin {
  static constexpr const char* kTag = "0.1";

  std::string mName;
  std::string mText;
  std::uint8_t mFlag1 = 0;
  std::uint8_t mFlag2 = 0;
  std::uint8_t mFlag3 = 0;
  std::vector<std::uint32_t> mIndices;
  SupportAction mSupport;

  template <class Self, class Walker>
  static void Walk(Self& self, Walker& walk) {
    walk.Rung("0.1")
        .Field("name", self.mName)
        .Field("text", self.mText)
        .Field("flag1", self.mFlag1)
        .Field("flag2", self.mFlag2)
        .Field("flag3", self.mFlag3)
        .Field("indices", self.mIndices)
        .Field("support", self.mSupport);
  }

  friend bool operator==(const Action&, const Action&) = default;
};

/// A step of a sequence.
struct Sequence : RecordOrigin {
  static constexpr const char* kTag = "0.1";

  std::uint32_t mValue1 = 0;
  std::uint32_t mValue2 = 0;
  std::uint32_t mValue3 = 0;

  template <class Self, class Walker>
  static void Walk(Self& self, Walker& walk) {
    walk.Rung("0.1")
        .Field("value1", self.mValue1)
        .Field("value2", self.mValue2)
        .Field("value3", self.mValue3);
  }

  friend bool operator==(const Sequence&, const Sequence&) = default;
};

struct SequencerData : RecordOrigin {
  static constexpr const char* kTag = "0.1";

  std::vector<Action> mActionSettings;
  std::map<std::string, std::vector<Sequence>> mSequences;
  std::string mName;
  ActionList mActions;

  template <class Self, class Walker>
  static void Walk(Self& self, Walker& walk) {
    walk.Rung("0.1")
        .Field("actionSettings", self.mActionSettings)
        .Field("sequences", self.mSequences)
        .Field("name", self.mName)
        .Field("actions", self.mActions);
  }
};

}  // namespace QovRyx

namespace QovJbf {

QOV_EXPORT void CopyToBlock(Block& block, const QovRyx::ActionList& actions);
QOV_EXPORT void CopyFromBlock(Block& block, QovRyx::ActionList& actions);

}  // namespace QovJbf
