#include "html/PageWriter.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <unordered_map>
#include <utility>

#include "Plural.h"
#include "Qov/Util/Raise.h"
#include "Terminal.h"
#include "diagnostics/Utf8.h"
#include "export/PartSurface.h"
#include "html/PageBuffers.h"
#include "html/PageField.h"
#include "html/PageMesh.h"
#include "html/PageResults.h"
#include "html/PageTables.h"
#include "html/PageText.h"
#include "picture/ColourScale.h"
#include "picture/Scene.h"

namespace Qov::Tools {
namespace {

using ErrorType = Util::Exception::ErrorType;
using QovMesh::Placement;

constexpr const char* kSource = "tools/html/PageWriter";
/// Room for the notes in a page, and the greatest length of one, in bytes.
constexpr std::size_t kNotesSize = std::size_t{32} * 1024;
constexpr std::size_t kNoteSize = 1000;
/// Greatest size of the manifest's members whose values are known late, without the notes.
constexpr std::uint64_t kManifestFrame = 1000;

/// Greatest size of a listed difference in the manifest.
constexpr std::uint64_t kDifferenceSize = 150;

/// A mesh in the page: where its values are in the arrays of the file.
struct WrittenMesh {
  std::vector<std::uint32_t> mPoints;
  std::vector<std::uint32_t> mCells;
  std::optional<std::size_t> mPosition;  ///< In the list of the part; nothing if it is left out.
};

/// Exact values, which are written last.
struct ExactValues {
  std::size_t mResult = 0;  ///< Position in the manifest, like the next one.
  std::size_t mField = 0;
  PageBuffer mBuffer;
};

/// A difference of a result at an item of a mesh of the page.
struct GreatestDifference {
  const ResultField* mpField = nullptr;
  std::size_t mItem = 0;
  float mValue = 0.0F;
};

class PageBuilder {
 public:
  PageBuilder(const QovRyx::Tree& tree, const ExportContent& content,
              const QovMesh::KindChoices& kinds, const PageRequest& request, const PageDiff* diff,
              SafeOutput& output, PageReport& report)
      : mTree(tree),
        mContent(content),
        mRequest(request),
        mpDiff(diff),
        mOutput(output),
        mReport(report),
        mMeshes(kinds),
        mBuffers(output, request.mLimit) {}

  void Write(const Json& tables) {
    for (const ExportPart& part : mContent.mParts)
      mPartMeshes.push_back(ListMeshes(mContent, part));
    mResults = GroupResults(mContent, mPartMeshes);
    BeginManifest(tables);
    AddParts();
    AddResults();
    AddExactValues();
    if (mpDiff != nullptr) AddDifferences();
    NoteFieldData();
    NoteLeftOut();
    WriteFile();
  }

 private:
  void Note(std::string text) { mReport.mNotes.push_back(std::move(text)); }
  void NoteLimit(const std::string& what) {
    mReport.mIsComplete = false;
    Note(fmt::format("left out, because --limit is {} bytes: {}", mRequest.mLimit, what));
  }

  // ---- the manifest without meshes and results

  void BeginManifest(const Json& tables) {
    mManifest = MakeManifest(mRequest.mTitle);
    mManifest["steps"] = StepsJson();
    mManifest["tables"] = tables;
    ChooseShown();
    AddResultHeads();
    mBuffers.Spend(GetFrameSize(mRequest.mTitle));
    std::unordered_map<std::uint32_t, Json> parts;
    for (const ExportPart& part : mContent.mParts) {
      parts[part.mId] = mContent.mParts.size();
      mBuffers.Spend(FormatManifest(PageText(part.mName)).size() + kPartFrame);
    }
    mBuffers.Spend(FormatManifest(MakeNodes(mTree, parts)).size());
    mBuffers.Spend(FormatManifest(mManifest).size() + kManifestFrame + kNotesSize);
    if (mpDiff != nullptr) mBuffers.Spend(mResults.size() * kMostGreatest * kDifferenceSize);
    if (!mBuffers.IsOverdrawn()) return;
    Util::Raise(kSource, ErrorType::OutOfBounds,
                fmt::format("the page is larger than {} bytes without any geometry; give a greater "
                            "--limit",
                            mRequest.mLimit));
  }

  /// Adds the results to the manifest, without their values.
  void AddResultHeads() {
    for (const PageResult& result : mResults) {
      Json components = Json::array();
      for (std::size_t k = 0; k < result.mWidth; ++k) {
        const std::string name = DescribeComponent(*result.mpFirst, k);
        components.push_back(name.empty() ? "value" : PageText(name));
      }
      mManifest["results"].push_back(
          {{"name", PageText(result.mName)},
           {"unit", result.mUnit.empty() ? Json() : Json(PageText(result.mUnit))},
           {"placement", result.mPlacement == Placement::Point ? "point" : "cell"},
           {"components", std::move(components)},
           {"hasMagnitude", result.mWidth > 1},
           {"fields", Json::array()}});
    }
  }

  Json StepsJson() const {
    Json steps = Json::array();
    for (const QovMesh::Step& step : mContent.mSteps) {
      steps.push_back({{"name", PageText(step.mName)},
                       {"time", step.mTime ? JsonNumber(*step.mTime) : Json()}});
    }
    return steps;
  }

  std::size_t FindShownStep() const {
    if (mRequest.mStep.empty()) return 0;
    const auto& steps = mContent.mSteps;
    for (std::size_t i = 0; i < steps.size(); ++i) {
      if (Escape(steps[i].mName, {}) == mRequest.mStep) return i;
    }
    for (std::size_t i = 0; i < steps.size(); ++i) {
      if (fmt::format("{}", i + 1) == mRequest.mStep) return i;
    }
    Util::Raise(kSource, ErrorType::ElementNotFound,
                "the page has no step " + Escape(mRequest.mStep, {}) +
                    "; ryx export --dry-run lists the steps");
  }

  /// Moves the result that is shown first to the front of mOrder.
  void ChooseShown() {
    for (std::size_t i = 0; i < mResults.size(); ++i) mOrder.push_back(i);
    std::size_t shown = 0;
    if (!mRequest.mResult.empty()) {
      while (shown < mResults.size() && Escape(mResults[shown].mName, {}) != mRequest.mResult) {
        ++shown;
      }
      if (shown == mResults.size()) {
        RaiseUnknownResult(mContent, mRequest.mResult, "ryx export --dry-run");
      }
      std::rotate(mOrder.begin(), mOrder.begin() + static_cast<std::ptrdiff_t>(shown),
                  mOrder.begin() + static_cast<std::ptrdiff_t>(shown) + 1);
    }
    Json& show = mManifest["show"];
    show = {{"result", nullptr}, {"component", 0}, {"step", FindShownStep()}};
    if (mResults.empty()) return;
    show["result"] = shown;
    const std::size_t width = mResults[shown].mWidth;
    if (mRequest.mComponent && *mRequest.mComponent >= width) {
      Util::Raise(kSource, ErrorType::ElementNotFound,
                  fmt::format("result {} has {}: choose another --component",
                              Escape(mResults[shown].mName, {}), Plural(width, "component")));
    }
    if (mRequest.mComponent) {
      show["component"] = *mRequest.mComponent;
    } else if (width > 1) {
      show["component"] = "magnitude";
    }
  }

  // ---- meshes

  void AddParts() {
    mWritten.resize(mContent.mParts.size());
    mPagePart.resize(mContent.mParts.size());
    for (std::size_t i = 0; i < mContent.mParts.size(); ++i) {
      const ExportPart& part = mContent.mParts[i];
      PagePartCounts& counts = mReport.mParts.emplace_back();
      counts.mId = part.mId;
      counts.mName = part.mName;
      Json meshes = Json::array();
      std::uint64_t numLeftOut = 0;
      for (const PartMesh& mesh : mPartMeshes[i]) {
        Json json = AddMesh(part, mesh, counts, mWritten[i].emplace_back());
        if (json.is_null()) {
          ++numLeftOut;
        } else {
          mWritten[i].back().mPosition = meshes.size();
          meshes.push_back(std::move(json));
        }
      }
      if (numLeftOut != 0) {
        NoteLimit(fmt::format("geometry {}{}", Escape(part.mName, {}),
                              meshes.empty() ? "" : ": the meshes of some steps"));
      }
      if (meshes.empty()) continue;
      AppendPart(i, std::move(meshes));
    }
  }

  /// Returns the mesh for the manifest; null if it does not fit.
  Json AddMesh(ExportPart part, const PartMesh& mesh, PagePartCounts& counts,
               WrittenMesh& written) {
    part.mMeshInstance = mesh.mInstance;
    const QovMesh::Mesh& all = mMeshes.Get(part);
    PageMesh surface(all, FindPartSurface(all, part.mName, mReport.mNotes));
    PageItem item = MakeMeshItem(all, surface);
    const bool isOfAllSteps = mesh.mSteps.size() == mContent.mSteps.size();
    if (!isOfAllSteps) item.mJson["steps"] = mesh.mSteps;
    Json json = mBuffers.Add(std::move(item));
    if (json.is_null()) return json;
    counts.mIsWritten = true;
    counts.mNumPoints += surface.mPoints.size();
    counts.mNumTriangles += surface.mTriangleCells.size();
    counts.mNumLines += surface.mLineCells.size();
    written.mPoints = std::move(surface.mPoints);
    written.mCells = std::move(surface.mCells);
    return json;
  }

  void AppendPart(std::size_t i, Json meshes) {
    const ExportPart& part = mContent.mParts[i];
    const std::size_t position = mManifest["parts"].size();
    Json json = {
        {"node", part.mId}, {"name", PageText(part.mName)}, {"colour", PartColour(position)}};
    json["meshes"] = std::move(meshes);
    mManifest["parts"].push_back(std::move(json));
    mPagePart[i] = position;
  }

  // ---- results

  void AddResults() {
    mReport.mResults.resize(mResults.size());
    for (const std::size_t i : mOrder) AddResult(i);
  }

  void AddResult(std::size_t i) {
    PageResultCounts& counts = mReport.mResults[i];
    counts.mName = mResults[i].mName;
    std::uint64_t numRounded = 0;
    for (const ResultField& field : mResults[i].mFields) {
      ++counts.mNumArrays;
      if (!mPagePart[field.mPart] || !mWritten[field.mPart][field.mMesh].mPosition || mIsFull ||
          !AddField(i, field, numRounded)) {
        ++counts.mNumLeftOut;
      }
    }
    if (numRounded != 0) {
      Note(fmt::format("result {}: {} above 2^24 rounded to floats", Escape(counts.mName, {}),
                       Plural(numRounded, "integer")));
    }
  }

  /// Returns false if the values do not fit. Then all later ones are left out, too.
  bool AddField(std::size_t i, const ResultField& field, std::uint64_t& numRounded) {
    const WrittenMesh& mesh = mWritten[field.mPart][field.mMesh];
    const bool isOfPoints = mResults[i].mPlacement == Placement::Point;
    const auto& positions = isOfPoints ? mesh.mPoints : mesh.mCells;
    PageValues values(*field.mpResult, positions);
    if (mpDiff != nullptr)
      values.SubtractFrom(PageValues(*mpDiff->mPairs.at(field.mpResult), positions));
    PageItem item = MakeFieldItem(values);
    item.mJson["part"] = *mPagePart[field.mPart];
    item.mJson["mesh"] = *mesh.mPosition;
    item.mJson["step"] = field.mStep ? Json(*field.mStep) : Json();
    Json json = mBuffers.Add(std::move(item));
    mIsFull = json.is_null();
    if (mIsFull) return false;
    numRounded += values.mNumRounded;
    if (mpDiff != nullptr) NoteGreatest(i, field, values);
    Json& fields = mManifest["results"][i]["fields"];
    KeepExactValues(i, fields.size(), values);
    fields.push_back(std::move(json));
    return true;
  }

  // ---- differences

  /// Keeps the greatest differences of a result.
  void NoteGreatest(std::size_t result, const ResultField& field, const PageValues& values) {
    std::vector<GreatestDifference>& list = mGreatest[result];
    for (const auto& [item, value] : values.FindGreatest(kMostGreatest)) {
      list.push_back({&field, item, value});
    }
    std::stable_sort(list.begin(), list.end(), [](const auto& a, const auto& b) {
      return std::abs(a.mValue) > std::abs(b.mValue);
    });
    if (list.size() > kMostGreatest) list.resize(kMostGreatest);
  }

  void AddDifferences() {
    Json list = Json::array();
    ItemNames names(mTree.GetNodes());
    for (const auto& [result, differences] : mGreatest) {
      for (const GreatestDifference& difference : differences) {
        const ResultField& field = *difference.mpField;
        const std::vector<std::size_t>& steps = mPartMeshes[field.mPart][field.mMesh].mSteps;
        list.push_back({{"result", result},
                        {"part", *mPagePart[field.mPart]},
                        {"step", field.mStep.value_or(steps.empty() ? 0 : steps[0])},
                        {"index", difference.mItem},
                        {"value", JsonFloat(difference.mValue)}});
        const WrittenMesh& mesh = mWritten[field.mPart][field.mMesh];
        const bool isOfPoints = mResults[result].mPlacement == Placement::Point;
        const ExportPart& part = mContent.mParts[field.mPart];
        const auto& positions = isOfPoints ? mesh.mPoints : mesh.mCells;
        mReport.mDifferences.push_back(
            {mResults[result].mName, field.mStep ? mContent.mSteps[*field.mStep].mName : "",
             part.mId, part.mName,
             names.Find(*part.mpGeometry, *field.mpResult->mpVariable, positions[difference.mItem]),
             difference.mValue});
      }
    }
    mManifest["diff"] = {{"a", PageText(mpDiff->mNameA)},
                         {"b", PageText(mpDiff->mNameB)},
                         {"greatest", std::move(list)}};
  }

  // ---- exact values

  /// Compresses exact values, unless those of all results take too much.
  void KeepExactValues(std::size_t result, std::size_t field, const PageValues& values) {
    if (mExactSize > kMostExactBytes) return;
    mExact.push_back({result, field, CodeExactValues(values)});
    mExactSize += mExact.back().mBuffer.mCompressed.size();
    if (mExactSize > kMostExactBytes) mExact.clear();
  }

  void AddExactValues() {
    for (ExactValues& exact : mExact) {
      PageItem item;
      item.mJson = Json::object();
      item.mBuffers.emplace_back("exact", std::move(exact.mBuffer));
      Json json = mBuffers.Add(std::move(item));
      if (json.is_null()) continue;
      mManifest["results"][exact.mResult]["fields"][exact.mField]["exact"] = json["exact"];
      ++mReport.mResults[exact.mResult].mNumExact;
    }
  }

  /// Notes results that belong neither to points nor to cells.
  void NoteFieldData() {
    std::uint64_t count = 0;
    for (const ExportPart& part : mContent.mParts) {
      count += static_cast<std::uint64_t>(std::count_if(
          part.mResults.begin(), part.mResults.end(),
          [](const ExportResult& result) { return result.mPlacement == Placement::Field; }));
    }
    if (count != 0) {
      Note(fmt::format("not drawn, because they belong neither to points nor to cells: {}",
                       Plural(count, "result")));
    }
  }

  void NoteLeftOut() {
    std::uint64_t numRough = 0;
    std::uint64_t numAll = 0;
    for (const PageResultCounts& counts : mReport.mResults) {
      numAll += counts.mNumArrays;
      numRough += counts.mNumArrays - counts.mNumLeftOut - counts.mNumExact;
      if (counts.mNumLeftOut == 0) continue;
      NoteLimit(fmt::format("result {}: {} of {}", Escape(counts.mName, {}), counts.mNumLeftOut,
                            Plural(counts.mNumArrays, "array")));
    }
    if (numRough != 0) {
      Note(fmt::format("without exact values, with 16 bits only: {} of {} of results", numRough,
                       Plural(numAll, "array")));
    }
  }

  // ---- file

  /// Returns the notes, cut to their room.
  Json NotesForPage() const {
    Json notes = Json::array();
    std::size_t size = 0;
    for (const std::string& note : mReport.mNotes) {
      const std::string text = Shortened(note, kNoteSize);
      size += FormatManifest(text).size() + 1;
      if (size > kNotesSize) {
        notes.push_back(Plural(mReport.mNotes.size() - notes.size(), "further note"));
        break;
      }
      notes.push_back(text);
    }
    return notes;
  }

  void WriteFile() {
    std::unordered_map<std::uint32_t, Json> parts;
    for (std::size_t i = 0; i < mContent.mParts.size(); ++i) {
      parts[mContent.mParts[i].mId] = mPagePart[i] ? Json(*mPagePart[i]) : Json();
    }
    mManifest["nodes"] = MakeNodes(mTree, parts);
    mManifest["notes"] = NotesForPage();
    WritePageBegin(mRequest.mTitle, mManifest, mOutput);
    mBuffers.CopyTo(mOutput);
    WritePageEnd(mOutput);
  }

  static constexpr std::size_t kMostGreatest = 5;  ///< Differences of a result that are listed.
  static constexpr std::uint64_t kPartFrame = 120;

  const QovRyx::Tree& mTree;
  const ExportContent& mContent;
  const PageRequest& mRequest;
  const PageDiff* mpDiff;
  SafeOutput& mOutput;
  PageReport& mReport;
  MeshCache mMeshes;
  PageBuffers mBuffers;
  Json mManifest;
  std::vector<std::vector<PartMesh>> mPartMeshes;     ///< By position in the content.
  std::vector<std::vector<WrittenMesh>> mWritten;     ///< Likewise.
  std::vector<std::optional<std::size_t>> mPagePart;  ///< Likewise: position in the manifest.
  std::vector<PageResult> mResults;
  std::vector<std::size_t> mOrder;  ///< The order in which results are taken.
  std::map<std::size_t, std::vector<GreatestDifference>> mGreatest;  ///< By result.
  std::vector<ExactValues> mExact;
  std::uint64_t mExactSize = 0;
  bool mIsFull = false;
};

}  // namespace

void WritePage(const QovRyx::Tree& tree, const ExportContent& content, const Json& tables,
               const QovMesh::KindChoices& kinds, const PageRequest& request, const PageDiff* diff,
               SafeOutput& output, PageReport& report) {
  PageBuilder(tree, content, kinds, request, diff, output, report).Write(tables);
}

}  // namespace Qov::Tools
