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
#include "Qov/Ryx/ResultLink.h"
#include "Qov/Util/ChunkedVector.h"

namespace QovRyx {

class HeavyPass;

/// A node that holds the arrays of one mesh: coordinates, connectivity, ids and simulation results.
/// Comments call each of them a result; some names of the format call it a variable.
class QOV_EXPORT Geometry : public Node {
 public:
  static constexpr const char* kType = "Geometry";
  /// The kind of a result that has none.
  static constexpr std::uint32_t kNoKind = 0xFFFFFFFF;
  /// Marks a result of any kind whose values are unsigned 32-bit integers.
  static constexpr std::uint32_t kUnsignedKindHighByte = 5;
  /// Returns true for the kinds of connectivity and ids.
  static constexpr bool IsIntegerKind(std::uint32_t kind) {
    return kind == 4 || kind == 5 || kind == 6 || kind == 9;
  }

  /// A result.
  struct VarStruct {
    std::string mName;  ///< Change it through RenameVariable only.
    QovUtil::Attributes mAttributes;
    NumericArray mValues;
    std::uint32_t mKind = kNoKind;  ///< 24 bits, or kNoKind.
    std::uint32_t mKindHighByte = 0;
    std::uint32_t mValue1 = 0;  ///< This field and the next five are carried without being used.
    std::uint32_t mValue2 = 0;
    std::uint8_t mFlag = 0;
    std::uint8_t mFlag1 = 0;
    std::uint8_t mFlag2 = 0;
    std::uint8_t mFlag3 = 0;
    ResultLink mLink;
    /// Offset of the values in the heavy stream of the file that is being written or read, in
    /// uncompressed bytes.
    std::optional<std::uint64_t> mOffset;

    /// Returns true for connectivity and ids, which are unsigned integers and are stored before all
    /// other results.
    bool IsIntegerKind() const { return Geometry::IsIntegerKind(mKind); }
    /// Returns true if the values are unsigned 32-bit integers, false if they are floats. A linked
    /// result does not store their type; ValueOwners finds it.
    bool HoldsUnsigned() const { return IsIntegerKind() || mKindHighByte == kUnsignedKindHighByte; }
    /// Copies the fields that describe the values of `other`: the high byte of the kind and the
    /// carried fields that a linked result does not store.
    void TakeValueFieldsOf(const VarStruct& other);
    /// Replaces the link by the values of `owner`, which is not a linked result.
    void TakeValuesOf(const VarStruct& owner);
  };

  using Node::Node;
  std::string GetType() const override { return kType; }
  /// Returns the version of the descriptors for the container version QovJbf::ryx_file_version. It
  /// is "0.6" for that container version and "0.7" for all others.
  std::string GetVersion() const override;

  using Variables = Qov::Util::ChunkedVector<VarStruct>;
  const Variables& GetVariables() const { return mVariables; }
  /// Gives write access to everything except the name.
  VarStruct& EditVariable(std::size_t position) { return mVariables[position]; }
  void AppendVariable(VarStruct variable) { mVariables.push_back(std::move(variable)); }
  void RenameVariable(std::size_t position, std::string name);
  /// Removes the results at the positions for which `isRemoved[position]` is true; positions after
  /// the end of `isRemoved` stay. The others keep their order. No link of the model changes:
  /// RemoveContent (ModelEdits.h) makes them follow.
  void RemoveVariables(const std::vector<bool>& isRemoved);
  /// Returns the position of the first result of that name.
  std::optional<std::size_t> FindVariable(const std::string& name);
  /// Does the same, but appends a default result of that name if there is none.
  std::uint64_t GetOrAddVariableIndex(const std::string& name);

  /// Appends the descriptors of all results (docs/format.md, "Descriptors"), in the layout of
  /// `version`. Their values must be in the heavy stream already. Raises ElementNotFound for a
  /// result that is not linked and has no offset.
  void WriteJb(QovJbf::JbFile& file, const std::string& lightKey, const std::string& heavyKey,
               const std::string& attributeKey, const std::string& version) const;
  /// Appends the results that the stream `lightKey` describes, in the layout of `version`. Their
  /// values stay in the file until LoadConnectivityBlocks and LoadOtherBlocks attach them. In
  /// layouts with inline values, the first value is at `inlineOffset` of the heavy stream, which is
  /// moved to the end of the last one. Raises UnknownVersion for a version after the newest known
  /// one, ModelError for a negative count, OutOfBounds if the stream ends early, and the errors of
  /// ReadAttributesFromJbf.
  void ReadJb(QovJbf::JbFile& file, const std::string& lightKey, const std::string& attributeKey,
              const std::string& version, std::uint64_t& inlineOffset);
  /// Attaches the values of connectivity and ids that ReadJb has found: each gets a DataLoader,
  /// which reads from `reader`, the heavy stream. `shuffled` says if the stored bytes are shuffled
  /// by the width of each array. Raises OutOfBounds if an array is not inside the stream.
  void LoadConnectivityBlocks(const std::shared_ptr<QovJbf::StreamReader>& reader, bool shuffled) {
    LoadBlocks(reader, shuffled, true);
  }
  /// Does the same for all other results.
  void LoadOtherBlocks(const std::shared_ptr<QovJbf::StreamReader>& reader, bool shuffled) {
    LoadBlocks(reader, shuffled, false);
  }
  /// Stores the values of connectivity and ids in the heavy stream, and their offsets here. Linked
  /// results store nothing. Called by Tree::Save.
  void SaveConnectivityBlocks(HeavyPass& pass) { SaveBlocks(pass, true); }
  /// Does the same for all other results.
  void SaveOtherBlocks(HeavyPass& pass) { SaveBlocks(pass, false); }

 private:
  void ProcessAttributes(VarStruct& variable, QovUtil::Attributes attributes) const;
  void LoadBlocks(const std::shared_ptr<QovJbf::StreamReader>& reader, bool shuffled,
                  bool integerKinds);
  void SaveBlocks(HeavyPass& pass, bool integerKinds);

  Variables mVariables;
  std::uint32_t& FindSlot(const std::string& name);
  void GrowIndex();

  /// A hash table that holds, for each name among the first mNumIndexed results, its first
  /// position plus 1. Free slots hold 0. The number of slots is a power of two, or 0.
  std::vector<std::uint32_t> mSlots;
  std::size_t mNumIndexed = 0;
};

}  // namespace QovRyx
