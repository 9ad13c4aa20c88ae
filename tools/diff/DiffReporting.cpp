#include "diff/DiffReporting.h"

#include <fmt/format.h>

#include <bit>
#include <nlohmann/json.hpp>

#include "Plural.h"

namespace Qov::Tools {
namespace {

std::string PathText(const std::vector<std::string>& path) {
  std::string text;
  for (std::size_t i = 0; i < path.size(); ++i) text += (i == 0 ? "" : "/") + path[i];
  return text;
}

/// Returns "Plate/Skin [Geometry], result Stress: ..."
std::string DifferenceText(const ModelDifference& difference) {
  std::string text;
  if (difference.mNodeA || difference.mNodeB) {
    text = fmt::format("{} [{}]", PathText(difference.mPath), difference.mType);
  }
  if (difference.mPositionA || difference.mPositionB) text += ", result " + difference.mResult;
  return text + (text.empty() ? "" : ": ") + difference.mText;
}

std::string CountsText(const char* what, const DiffReport::Counts& counts,
                       const std::string& same) {
  return fmt::format("{}: {} in both{}, {} only in A, {} only in B", what, counts.mInBoth, same,
                     counts.mOnlyInA, counts.mOnlyInB);
}

/// Returns an element as a number, without the bits of a NaN.
Json ElementJson(std::uint32_t bits, bool integer) {
  if (integer) return bits;
  return JsonFloat(std::bit_cast<float>(bits));
}

Json ValuesJson(const ModelDifference& difference) {
  const ValueComparison& values = *difference.mValues;
  Json json{{"count", values.mNumValues},
            {"differing", values.mNumDiffering},
            {"largest", JsonNumber(values.mDifference)},
            {"position", values.mPosition},
            {"a", ElementJson(values.mBitsA, values.mIntegers)},
            {"b", ElementJson(values.mBitsB, values.mIntegers)}};
  if (difference.mItem) {
    json["item"] = NameOf(difference.mItem->mKind);
    json["number"] = difference.mItem->mNumber;
  }
  if (difference.mNorms) {
    json["norms"] = {{"max", JsonNumber(difference.mNorms->mLargest)},
                     {"l2", JsonNumber(difference.mNorms->mL2)},
                     {"relativeL2", JsonNumber(difference.mNorms->mRelativeL2)},
                     {"leftOut", difference.mNorms->mNumLeftOut}};
  }
  return json;
}

Json PathJson(const std::vector<std::string>& path) {
  Json json = Json::array();
  for (const std::string& name : path) json.push_back(JsonText(name));
  return json;
}

Json DifferenceJson(const ModelDifference& difference) {
  Json json = {{"code", difference.mCode}, {"text", JsonText(difference.mText)}};
  if (difference.mNodeA || difference.mNodeB) {
    json["path"] = PathJson(difference.mPath);
    json["type"] = JsonText(difference.mType);
  }
  if (difference.mNodeA) json["nodeA"] = *difference.mNodeA;
  if (difference.mNodeB) json["nodeB"] = *difference.mNodeB;
  if (difference.mPositionA || difference.mPositionB) {
    json["result"] = JsonText(difference.mResult);
  }
  if (difference.mPositionA) json["resultA"] = *difference.mPositionA;
  if (difference.mPositionB) json["resultB"] = *difference.mPositionB;
  if (difference.mValues) json["values"] = ValuesJson(difference);
  return json;
}

}  // namespace

void PrintReport(const DiffReport& report, Output& output) {
  for (const ModelDifference& difference : report.mDifferences) {
    output.Line(Escape(DifferenceText(difference), output.GetStyle()));
  }
  output.Line(CountsText("nodes", report.mNodes, ""));
  output.Line(
      CountsText("results", report.mResults, fmt::format(" ({} the same)", report.mResults.mSame)));
  const std::size_t count = report.mDifferences.size() - report.mNumUnreadable;
  std::string text = count == 0 ? "no differences" : Plural(count, "difference");
  if (report.mNumUnreadable != 0) {
    text += ", " + Plural(report.mNumUnreadable, "part") + " not compared";
  }
  output.Line(text);
}

void AddJson(const DiffReport& report, Json& document) {
  document["same"] = report.mDifferences.empty();
  document["nodes"] = {{"both", report.mNodes.mInBoth},
                       {"onlyInA", report.mNodes.mOnlyInA},
                       {"onlyInB", report.mNodes.mOnlyInB}};
  document["results"] = {{"both", report.mResults.mInBoth},
                         {"same", report.mResults.mSame},
                         {"onlyInA", report.mResults.mOnlyInA},
                         {"onlyInB", report.mResults.mOnlyInB}};
  Json& differences = document["differences"] = Json::array();
  for (const ModelDifference& difference : report.mDifferences) {
    differences.push_back(DifferenceJson(difference));
  }
}

}  // namespace Qov::Tools
