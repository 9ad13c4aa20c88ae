#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Qov/Export.h"
#include "Qov/Jbf/JbFile.h"
#include "Qov/Ryx/Node.h"
#include "Qov/Ryx/NumericArray.h"
#include "Qov/Util/ChunkedVector.h"

namespace QovRyx {

/// The arrays of one mesh: coordinates, connectivity, ids and results, all called variables.
class QOV_EXPORT Geometry : public Node {
 public:
  static constexpr const char* kType = "Geometry";
  static constexpr std::uint32_t kNoKind = 0xFFFFFFFF;
  /// Marks a result of any kind whose values are unsigned 32-bit integers.
  static constexpr std::uint32_t kUnsignedKindHighByte = 5;
  static constexpr bool IsIntegerKind(std::uint32_t kind) {
    return kind == 4 || kind == 5 || kind == 6 || kind == 9;
  }

  /// The place of a variable in a model.
  struct Link {
    std::uint32_t mNode = 0;      ///< Tree id of a geometry.
    std::uint32_t mVariable = 0;  ///< Position among its variables.
    friend bool operator==(const Link&, const Link&) = default;
  };

  struct VarStruct {
    std::string mName;  ///< Change it through RenameVariable only.
    QovUtil::Attributes mAttributes;
    NumericArray mValues;
    std::uint32_t mKind = kNoKind;  ///< 24 bits, or kNoKind.
    std::uint32_t mKindHighByte = 0;
    std::uint32_t mValue1 = 0;  ///< This field and the next five are carried.
    std::uint32_t mValue2 = 0;
    std::uint8_t mFlag = 0;
    std::uint8_t mFlag1 = 0;
    std::uint8_t mFlag2 = 0;
    std::uint8_t mFlag3 = 0;
    bool mLinked = false;        ///< Shares the values of the variable that mLink names.
    bool mLeadsNowhere = false;  ///< mLink was a dangling link in the file it was read from.
    Link mLink;
    /// Where the values lie in the heavy stream of the file being written or read.
    std::optional<std::uint64_t> mOffset;

    /// Returns true for connectivity and ids: unsigned integers, stored before all other arrays.
    bool IsIntegerKind() const { return Geometry::IsIntegerKind(mKind); }
    /// Returns true if the values are unsigned 32-bit integers, false if they are floats. For a
    /// linked result, answers for the result whose values it shares.
    bool HoldsUnsigned() const { return IsIntegerKind() || mKindHighByte == kUnsignedKindHighByte; }
    /// Copies the fields that describe the values of `other`: the high byte of the kind and the
    /// carried fields that a linked variable does not store.
    void TakeValueFieldsOf(const VarStruct& other);
    /// Replaces the link by the values of `owner`, which is not a linked variable.
    void TakeValuesOf(const VarStruct& owner);
  };

  using Node::Node;
  std::string GetType() const override { return kType; }
  /// "0.6" when files of that container version are written, else "0.7", which it always is here.
  std::string GetVersion() const override;

  using Variables = Qov::Util::ChunkedVector<VarStruct>;
  const Variables& GetVariables() const { return mVariables; }
  /// For changing anything but the name.
  VarStruct& EditVariable(std::size_t position) { return mVariables[position]; }
  void AppendVariable(VarStruct variable) { mVariables.push_back(std::move(variable)); }
  void RenameVariable(std::size_t position, std::string name);
  /// The position of the first variable of that name.
  std::optional<std::size_t> FindVariable(const std::string& name);
  /// The same; appends a default variable of that name if there is none.
  std::uint64_t GetOrAddVariableIndex(const std::string& name);

  /// Writes the descriptors of all variables, whose values are already in the heavy stream.
  /// Raises ElementNotFound for a variable without an offset.
  void WriteJb(QovJbf::JbFile& file, const std::string& lightKey, const std::string& heavyKey,
               const std::string& attributeKey, const std::string& version);
  /// Reads descriptors as that version of a geometry record lays them out. `inlineOffset` is
  /// where values that follow inline are taken from in the heavy stream, and is moved past them.
  void ReadJb(QovJbf::JbFile& file, const std::string& lightKey, const std::string& attributeKey,
              const std::string& version, std::uint64_t& inlineOffset);
  /// Lets every variable read its values through `reader`. Raises OutOfBounds if an array does
  /// not lie inside the stream.
  void AttachValues(const std::shared_ptr<QovJbf::StreamReader>& reader, bool shuffled);

 private:
  Variables mVariables;
  std::uint32_t& FindSlot(const std::string& name);
  void GrowIndex();

  /// A hash table that holds, for each name among the first mNumIndexed variables, its first
  /// position plus 1. Free slots hold 0. The number of slots is a power of two, or 0.
  std::vector<std::uint32_t> mSlots;
  std::size_t mNumIndexed = 0;
};

}  // namespace QovRyx
