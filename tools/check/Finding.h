#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Qov::Tools {

enum class Severity { Error, Warning };

/// Where in a file something was found. What does not apply is left out.
struct Place {
  struct Named {
    std::uint32_t mNumber = 0;  ///< A node's id, or a result's position in its geometry.
    std::string mName;
  };

  std::string mStream;                  ///< Empty: the file as a whole.
  std::optional<std::uint64_t> mBlock;  ///< Position in the index.
  /// Within the uncompressed stream; within the file if a block or no stream is named.
  std::optional<std::uint64_t> mByte;
  std::optional<Named> mNode;
  std::optional<Named> mResult;
  std::string mPart;  ///< Of a record: "viewState.miscState".

  static Place InFile(std::uint64_t byte);
  static Place InStream(std::string stream, std::optional<std::uint64_t> byte = std::nullopt);

  /// For a line: `stream "Light Data", byte 82, node 5 "Skin"`. Names are not escaped.
  std::string GetText() const;
};

/// Something that is wrong with a file.
struct Finding {
  Severity mSeverity = Severity::Error;
  /// A short word for the kind of it, of those that docs/json/check.md lists.
  std::string mCode;
  Place mPlace;
  std::string mText;  ///< A sentence. Names in it are not escaped.
};

/// Collects findings: all are counted, but only so many of a kind are kept, since a file can be
/// wrong in a million places.
class Findings {
 public:
  explicit Findings(std::size_t limitPerCode) : mLimit(limitPerCode) {}

  void Error(std::string_view code, Place place, std::string text) {
    Add({Severity::Error, std::string(code), std::move(place), std::move(text)});
  }
  void Warning(std::string_view code, Place place, std::string text) {
    Add({Severity::Warning, std::string(code), std::move(place), std::move(text)});
  }

  /// In the order in which they were found.
  const std::vector<Finding>& GetKept() const { return mKept; }
  std::uint64_t GetNumErrors() const { return mNumErrors; }
  std::uint64_t GetNumWarnings() const { return mNumWarnings; }
  /// By code, how many were counted without being kept.
  std::map<std::string, std::uint64_t> GetOmitted() const;

 private:
  void Add(Finding finding);

  std::size_t mLimit;
  std::vector<Finding> mKept;
  std::map<std::string, std::uint64_t> mCounts;
  std::uint64_t mNumErrors = 0;
  std::uint64_t mNumWarnings = 0;
};

/// A name in quotes, cut if it is very long.
std::string Quoted(std::string_view name);

/// Reports a text that holds a zero byte: `text` is what readers take of its `length` bytes.
void ReportZeroByte(Place place, std::string_view text, std::uint64_t length, Findings& findings);

}  // namespace Qov::Tools
