#pragma once

#include <string>
#include <vector>

#include "Qov/Export.h"
#include "Qov/Ryx/BlockVersionedIo.h"

namespace QovRyx {

/// One entry of the history of a file: a program that wrote it (docs/format.md, "History").
struct ModifierInfo : RecordOrigin {
  static constexpr const char* kTag = "0.1";

  /// True if this program records its host and user too. Not stored.
  bool mRecordMachine = false;
  std::string mApplication;
  std::string mApplicationVersion;
  std::string mFileVersion;
  std::string mDate;
  std::string mHost;
  std::string mUser;
  std::string mComment;

  template <class Self, class Walker>
  static void Walk(Self& self, Walker& walk) {
    walk.Rung("0.1")
        .Field("application", self.mApplication)
        .Field("applicationVersion", self.mApplicationVersion)
        .Field("fileVersion", self.mFileVersion)
        .Field("date", self.mDate)
        .Field("host", self.mHost)
        .Field("user", self.mUser)
        .Field("comment", self.mComment);
  }

  friend bool operator==(const ModifierInfo&, const ModifierInfo&) = default;
};

/// Returns true for an entry of one of the eight legacy builds, whose probe records differ from
/// those of later ones.
QOV_EXPORT bool IsLegacyWriter(const ModifierInfo& entry);

/// Returns the entry of the legacy build whose probe records a file with this history holds, or
/// null. Skips entries of merges, because a merge does not change probe records.
QOV_EXPORT const ModifierInfo* FindLegacyWriter(const std::vector<ModifierInfo>& history);

}  // namespace QovRyx
