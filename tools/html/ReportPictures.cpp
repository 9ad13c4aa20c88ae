#include "html/ReportPictures.h"

#include <fmt/format.h>

#include <cstdint>

#include "ErrorText.h"
#include "Plural.h"
#include "Terminal.h"
#include "TreeWalk.h"
#include "picture/DrawPicture.h"
#include "picture/PngFile.h"

namespace Qov::Tools {
namespace {

constexpr std::uint32_t kWidth = 480;
constexpr std::uint32_t kHeight = 360;

ReportPicture DrawGeometry(const QovRyx::Tree& tree, std::uint32_t id, const std::string& name) {
  PictureRequest request;
  request.mNodeIds = {id};
  request.mWidth = kWidth;
  request.mHeight = kHeight;
  PictureReport report;
  const Image image = DrawPicture({tree, name}, request, report);
  std::uint64_t numTriangles = 0;
  for (const ReportedPanel& panel : report.mPanels) {
    for (const ReportedPart& part : panel.mParts) numTriangles += part.mDrawn.mNumTriangles;
  }
  return {name, EncodePng(image),
          fmt::format("Outer surface of geometry {}, {}", name, Plural(numTriangles, "triangle"))};
}

}  // namespace

std::vector<ReportPicture> DrawGeometries(const std::string& path,
                                          std::vector<std::string>& notes) {
  QovRyx::Tree tree(false);
  QovRyx::Tree::IdMap ids;
  tree.Load(path, ids, QovRyx::Tree::ReadMode::WithoutViews,
            QovRyx::Tree::SupportedFileFormats::Ryx);
  std::vector<ReportPicture> pictures;
  std::size_t numTried = 0;
  std::uint64_t numLeftOut = 0;
  TreeWalk walk(tree.GetNodes());
  while (const auto step = walk.Next()) {
    if (step->mEntry == nullptr || step->mAgain) continue;
    const auto* geometry = dynamic_cast<const QovRyx::Geometry*>(step->mEntry->mData.get());
    if (geometry == nullptr) continue;
    if (numTried == kMostReportPictures) {
      ++numLeftOut;
      continue;
    }
    ++numTried;
    try {
      pictures.push_back(DrawGeometry(tree, step->mId, geometry->GetName()));
    } catch (const Util::Exception& error) {
      notes.push_back(fmt::format("no picture of geometry {} [{}]: {}",
                                  Escape(geometry->GetName(), {}), step->mId,
                                  DescribeError(error, {})));
    }
  }
  if (numLeftOut != 0) {
    notes.push_back(fmt::format("no pictures of {} further geometries; a report has at most {}",
                                numLeftOut, kMostReportPictures));
  }
  return pictures;
}

}  // namespace Qov::Tools
