#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "ItemNames.h"
#include "Json.h"
#include "SafeOutput.h"
#include "export/ExportContent.h"
#include "html/PageDiff.h"
#include "picture/ResultScalars.h"

namespace Qov::Tools {

/// The options of the user for a page.
struct PageRequest {
  std::string mTitle;
  std::string mResult;   ///< Name of the result that is shown first; empty for the first one.
  Component mComponent;  ///< Nothing for the magnitude.
  std::string mStep;     ///< Name or number, from 1, of the step shown first; empty for the first.
  std::uint64_t mLimit = 0;  ///< Greatest size of the page, in bytes.
};

/// Counts of a result: arrays are those of parts, meshes and steps.
struct PageResultCounts {
  std::string mName;
  std::uint64_t mNumArrays = 0;
  std::uint64_t mNumLeftOut = 0;  ///< Because of the limit.
  std::uint64_t mNumExact = 0;    ///< With their exact values.
};

/// Counts of a geometry, over all of its meshes.
struct PagePartCounts {
  std::uint32_t mId = 0;
  std::string mName;
  std::uint64_t mNumPoints = 0;
  std::uint64_t mNumTriangles = 0;
  std::uint64_t mNumLines = 0;
  bool mIsWritten = false;
};

/// One of the greatest differences of a result.
struct PageDifference {
  std::string mResult;
  std::string mStep;  ///< Empty for all steps.
  std::uint32_t mNode = 0;
  std::string mNodeName;
  ItemName mItem;
  float mValue = 0.0F;  ///< The length for vectors.
};

/// What is in a page, and what is not.
struct PageReport {
  std::vector<PagePartCounts> mParts;
  std::vector<PageResultCounts> mResults;
  std::vector<PageDifference> mDifferences;  ///< By result, each in descending order.
  std::vector<std::string> mNotes;
  bool mIsComplete = true;  ///< False if the limit keeps meshes or results out.
};

/// Exact values are in a page if those of all results take at most this number of bytes,
/// compressed.
inline constexpr std::uint64_t kMostExactBytes = 1U << 20U;

/// Writes a page with the outer surfaces and the point and cell data of a content. `tables` is
/// that of the manifest. Reads one mesh and one array at a time.
///
/// A page that would exceed the limit lacks, in this order: exact values, results from the last one
/// on, meshes that do not fit. The result that is shown first is taken as the first one.
///
/// With `diff`, which may be null, the values are those of its B minus those of A, and the greatest
/// differences are listed.
///
/// Adds the notes about the surfaces and what is left out to the report. Raises ElementNotFound if
/// no part has the result that is to be shown first, or if there is no such step; OutOfBounds if
/// the page exceeds the limit without meshes; and the errors of reading and writing.
void WritePage(const QovRyx::Tree& tree, const ExportContent& content, const Json& tables,
               const QovMesh::KindChoices& kinds, const PageRequest& request, const PageDiff* diff,
               SafeOutput& output, PageReport& report);

}  // namespace Qov::Tools
