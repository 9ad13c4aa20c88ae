#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "Qov/Jbf/JbFile.h"
#include "Qov/Ryx/Geometry.h"
#include "model/StreamNames.h"
#include "support/ModelBuilder.h"
#include "support/Streams.h"

namespace Qov::Test {

/// Writes a file as older programs did: the record of the root, then those of its children.
class OldFile {
 public:
  explicit OldFile(std::uint32_t numRecords) : mNumRecords(numRecords) {
    GetIndex().GetWritingBlockIndex(QovRyx::kLightData);
    GetIndex().Put(QovRyx::kRyxTree, numRecords);
    Put({1, 0, 0, 0, 2, numRecords}, "", "", "");
  }

  QovJbf::Index& GetIndex() { return mFile.GetIndex(); }
  QovJbf::JbFile& GetFile() { return mFile; }

  void PutRecord(const std::string& name, const std::string& type, const std::string& version) {
    const std::uint32_t id = ++mLastId;
    const std::uint32_t previous = id == 2 ? 0 : id - 1;
    const std::uint32_t next = id == mNumRecords ? 0 : id + 1;
    Put({id, 1, previous, next, 0, 0}, name, type, version);
  }

  void PutGeometry(QovRyx::Geometry& geometry, const std::string& version) {
    PutRecord(geometry.GetName(), "Geometry", version);
    geometry.WriteJb(mFile, QovRyx::kLightData, QovRyx::kHeavyData, QovRyx::kAttributes, version);
  }

 private:
  void Put(const std::array<std::uint32_t, 6>& links, const std::string& name,
           const std::string& type, const std::string& version) {
    for (const std::uint32_t link : links) GetIndex().Put(QovRyx::kRyxTree, link);
    for (const std::string& text : {name, type, version}) GetIndex().Put(QovRyx::kRyxTree, text);
    const std::uint64_t light = GetIndex().GetStreamLength(QovRyx::kLightData);
    GetIndex().Put(QovRyx::kRyxTree, static_cast<std::uint32_t>(light));
  }

  QovJbf::JbFile mFile;
  std::uint32_t mNumRecords;
  std::uint32_t mLastId = 1;
};

/// Writes a model with inline values. It has the structure of a plate.
inline void SaveOldestModel(const std::string& path) {
  QovRyx::Geometry geometry("Skin");
  for (const char* name : {"Coordinates", "Stress|LC1"}) {
    auto variable = MakeVariable(name, 12, QovRyx::NumericArray::Of(Ramp(9, 1.0F), 3));
    variable.mOffset = 0;
    geometry.AppendVariable(variable);
  }
  OldFile old(PlateIds::kGeometry);
  for (std::uint32_t id = 2; id < PlateIds::kGeometry; ++id) old.PutRecord("", "Group", "0.1");
  old.PutGeometry(geometry, "0.5");
  WriteTo(old.GetFile(), path, "0.5");
}

}  // namespace Qov::Test
