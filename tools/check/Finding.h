#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Qov::Tools {

enum class Severity { Error, Warning };

/// Place of a finding in a file. Members that do not apply are empty.
struct Place {
  struct Named {
    std::uint32_t mNumber = 0;  ///< A node's id, or a result's position in its geometry.
    std::string mName;
  };

  std::string mStream;                  ///< Empty for the whole file.
  std::optional<std::uint64_t> mBlock;  ///< Position in the index.
  /// Within the uncompressed stream; within the file if a block or no stream is named.
  std::optional<std::uint64_t> mByte;
  std::optional<Named> mNode;
  std::optional<Named> mResult;
  std::string mPart;  ///< Part of a record, such as "viewState.miscState".

  static Place InFile(std::uint64_t byte);
  static Place InStream(std::string stream, std::optional<std::uint64_t> byte = std::nullopt);

  /// Returns a text such as `stream "Light Data", byte 82, node 5 "Skin"`. Names are not escaped.
  std::string GetText() const;
};

/// An error or an oddity in a file.
struct Finding {
  Severity mSeverity = Severity::Error;
  /// One of the codes in docs/json/check.md.
  std::string mCode;
  Place mPlace;
  std::string mText;  ///< A sentence. Names in it are not escaped.
};

/// Collects findings. Counts all, but keeps only a limited number per code, because a file can have
/// millions of errors.
class Findings {
 public:
  explicit Findings(std::size_t limitPerCode) : mLimit(limitPerCode) {}

  void Error(std::string_view code, Place place, std::string text) {
    Add({Severity::Error, std::string(code), std::move(place), std::move(text)});
  }
  void Warning(std::string_view code, Place place, std::string text) {
    Add({Severity::Warning, std::string(code), std::move(place), std::move(text)});
  }

  /// Returns the kept findings in the order of their discovery.
  const std::vector<Finding>& GetKept() const { return mKept; }
  std::uint64_t GetNumErrors() const { return mNumErrors; }
  std::uint64_t GetNumWarnings() const { return mNumWarnings; }
  /// Returns by code the number of findings that were not kept.
  std::map<std::string, std::uint64_t> GetOmitted() const;

 private:
  void Add(Finding finding);

  std::size_t mLimit;
  std::vector<Finding> mKept;
  std::map<std::string, std::uint64_t> mCounts;
  std::uint64_t mNumErrors = 0;
  std::uint64_t mNumWarnings = 0;
};

/// Returns a name in quotes, shortened if it is very long.
std::string Quoted(std::string_view name);

/// Reports a text with a zero byte. `text` is the part of its `length` bytes that readers use.
void ReportZeroByte(Place place, std::string_view text, std::uint64_t length, Findings& findings);

}  // namespace Qov::Tools
