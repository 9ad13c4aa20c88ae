#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "Qov/Export.h"
#include "Qov/Jbf/JbFile.h"
#include "Qov/Ryx/Node.h"

namespace QovRyx {

/// The sets of a node in their stored form: all names joined, all values joined, and the end of
/// each name and of each set's values.
class QOV_EXPORT SetColumns {
 public:
  /// Refers to one set of the columns, which must outlive it.
  struct View {
    std::string_view mName;
    std::span<const std::uint32_t> mValues;
  };

  std::size_t size() const { return mNameEnds.size() - 1; }
  View operator[](std::size_t i) const {
    return {std::string_view(mNames).substr(mNameEnds[i], mNameEnds[i + 1] - mNameEnds[i]),
            std::span(mValues).subspan(mValueEnds[i], mValueEnds[i + 1] - mValueEnds[i])};
  }
  /// Appends a set. Raises OutOfBounds if all names or all values would pass 2^32 - 1.
  void Add(std::string_view name, std::span<const std::uint32_t> values);

 private:
  friend class NodeSets;
  std::vector<std::uint32_t> mNameEnds{0};  ///< Begins with 0; so does mValueEnds.
  std::string mNames;
  std::vector<std::uint32_t> mValueEnds{0};
  std::vector<std::uint32_t> mValues;
};

/// Named lists of numbers, such as the nodes on a boundary. The lists of a loaded model stay in its
/// file until they are requested.
class QOV_EXPORT NodeSets : public Node {
 public:
  struct Set {
    std::string mName;
    std::vector<std::uint32_t> mValues;
    friend bool operator==(const Set&, const Set&) = default;
  };

  static constexpr const char* kType = "NodeSets";

  using Node::Node;
  std::string GetType() const override { return kType; }

  /// Returns the number of sets without reading them.
  std::uint32_t GetNumSets() const { return mNumSets; }
  /// Returns all sets. Sets in a file are read from it and verified before this returns. Raises
  /// MismatchError if the stored pieces disagree, OutOfBounds if a piece passes the end of the
  /// stream or if too many nodes share bytes, and the errors of StreamReader::ReadVerified.
  std::vector<Set> GetSets() const;
  /// Returns the same sets in their stored form, which takes the least memory.
  SetColumns GetColumns() const { return LoadColumns(true); }
  void SetSets(const std::vector<Set>& sets);

  /// Appends the sets to the heavy stream (docs/format.md, "Node sets") and records their offset.
  /// `shuffle` has no effect, because sets are stored plain. Sets that are read from a file are
  /// verified only after GetReader()->Verify() has returned.
  void SaveDataBlocks(QovJbf::JbFile& file, const std::string& heavyKey, bool shuffle);
  /// Appends the number of sets and the offset that SaveDataBlocks has recorded.
  void WriteLightData(QovJbf::JbFile& file, const std::string& lightKey) const;
  /// Reads the number of sets and their offset for LoadDataBlocks.
  void ReadLightData(QovJbf::JbFile& file, const std::string& lightKey);
  /// Attaches the sets: they are read from `reader`, the heavy stream, when they are requested.
  /// `pNumBytes` counts the bytes of all sets of the file, those of each node when they are first
  /// read. They may be 64 times as long as the stream, because several nodes may share bytes.
  void LoadDataBlocks(std::shared_ptr<QovJbf::StreamReader> reader,
                      std::shared_ptr<std::uint64_t> pNumBytes = nullptr);
  /// Returns the offset of the sets in the stream that they are read from, in uncompressed bytes.
  std::uint64_t GetSourceOffset() const { return mSourceOffset; }
  /// Returns the least number of bytes that they take there. The length of the names is unknown.
  std::uint64_t GetLeastStoredSize() const;
  /// Records that the file that is being written holds the bytes of the sets at `offset`.
  void SetStoredOffset(std::uint64_t offset) { mStoredOffset = offset; }
  /// Reads the lengths of the pieces and returns the end of the sets in the stream that they are
  /// read from. Raises the errors of GetSets.
  std::uint64_t GetStoredEnd() const;
  /// Returns the stream that the sets are read from, or null if they are in memory.
  QovJbf::StreamReader* GetReader() const { return mpReader.get(); }

  QovUtil::Attributes mAttributes;  ///< For programs; not stored in files.

 private:
  SetColumns LoadColumns(bool verified) const;
  SetColumns ReadColumns(bool verified) const;
  void CountBytes(std::uint64_t numBytes) const;

  SetColumns mColumns;  ///< The sets, if they are not in a file.
  std::uint32_t mNumSets = 0;
  std::shared_ptr<QovJbf::StreamReader> mpReader;
  mutable std::shared_ptr<std::uint64_t> mpNumBytes;  ///< Null once these sets are counted.
  std::uint64_t mSourceOffset = 0;
  // The light data of the file that is being read or written.
  std::uint64_t mStoredOffset = 0;
  std::uint32_t mNumStoredValues = 0;
};

}  // namespace QovRyx
