#include "picture/ResultScalars.h"

#include <fmt/format.h>

#include <algorithm>
#include <bit>
#include <charconv>
#include <utility>

#include "Plural.h"
#include "Qov/Util/Raise.h"
#include "Suggestion.h"
#include "Terminal.h"
#include "diagnostics/Printable.h"

namespace Qov::Tools {
namespace {

using ErrorType = Util::Exception::ErrorType;
using QovMesh::Placement;

constexpr const char* kSource = "tools/picture/ResultScalars";

float LengthOf(std::span<const float> vector) {
  double sum = 0;
  for (const float value : vector) sum += double{value} * value;
  return static_cast<float>(std::sqrt(sum));
}

}  // namespace

Component ParseComponent(const std::string& word) {
  if (word == "magnitude") return std::nullopt;
  if (word.size() == 1 && word >= "x" && word <= "z") {
    return static_cast<std::size_t>(word[0] - 'x');
  }
  std::size_t number = 0;
  const auto [stop, error] = std::from_chars(word.data(), word.data() + word.size(), number);
  if (error == std::errc() && stop == word.data() + word.size() && number > 0) return number - 1;
  Util::Raise(kSource, ErrorType::InvalidEnumeration,
              "--component takes x, y, z, magnitude or a number from 1, not " + Util::Quote(word));
}

double ScalarRange::FindShare(float value) const {
  constexpr double kRounding = 4.0 * std::numeric_limits<float>::epsilon();
  const double span = static_cast<double>(mGreatest) - mLeast;
  const double largest = std::max(std::abs(mGreatest), std::abs(mLeast));
  return span > kRounding * largest ? (static_cast<double>(value) - mLeast) / span : 0.5;
}

std::optional<float> ResultScalars::FindShapeValue(std::span<const std::uint32_t> corners,
                                                   std::uint32_t cell) const {
  if (mValues.empty()) return std::nullopt;
  if (mPlacement == Placement::Cell) return mValues[cell];
  const bool isWhole = std::all_of(corners.begin(), corners.end(), [this](std::uint32_t point) {
    return std::isfinite(mValues[point]);
  });
  return isWhole ? std::nullopt : std::optional(std::numeric_limits<float>::quiet_NaN());
}

const ExportResult* FindPlacedResult(const ExportPart& part, std::string_view name) {
  const auto found =
      std::find_if(part.mResults.begin(), part.mResults.end(), [name](const ExportResult& result) {
        return result.mName == name && result.mPlacement != Placement::Field;
      });
  return found == part.mResults.end() ? nullptr : &*found;
}

ResultScalars LoadScalars(const ExportPart& part, const ExportResult* result,
                          const Component& component) {
  if (result == nullptr) return {};
  const std::size_t width = result->mWidth;
  if (component && *component >= width) {
    Util::Raise(
        kSource, ErrorType::ElementNotFound,
        fmt::format("result {} of {} has {}: choose another --component", Escape(result->mName, {}),
                    Escape(part.mName, {}), Plural(width, "component")));
  }
  std::vector<std::uint32_t> bits;
  LoadValues(*result, bits);
  ResultScalars scalars{result->mPlacement, std::vector<float>(bits.size() / width)};
  std::vector<float> vector(width);
  for (std::size_t i = 0; i < scalars.mValues.size(); ++i) {
    for (std::size_t k = 0; k < width; ++k) {
      const std::uint32_t word = bits[i * width + k];
      vector[k] = result->mIsUnsigned ? static_cast<float>(word) : std::bit_cast<float>(word);
    }
    const bool isOne = component || width == 1;
    scalars.mValues[i] = isOne ? vector[component.value_or(0)] : LengthOf(vector);
  }
  return scalars;
}

void RaiseUnknownResult(const ExportContent& content, const std::string& name,
                        const std::string& list) {
  std::vector<std::string> names;
  for (const ExportPart& part : content.mParts) {
    for (const ExportResult& result : part.mResults) {
      if (result.mPlacement != Placement::Field) names.push_back(result.mName);
    }
  }
  std::string similar = Suggest(name, names);
  for (const std::string& known : names) {  // the step is missing, or the end
    if (similar.empty() && known.starts_with(name)) similar = known;
  }
  Util::Raise(kSource, ErrorType::ElementNotFound,
              "no part has the result " + Escape(name, {}) + " at points or cells: " +
                  (similar.empty() ? "" : "did you mean " + Escape(similar, {}) + "? ") + "\"" +
                  list + "\" lists the names");
}

void NoteUncoloured(const ExportContent& content, const std::string& name,
                    std::vector<std::string>& notes) {
  const auto count = std::count_if(
      content.mParts.begin(), content.mParts.end(),
      [&](const ExportPart& part) { return FindPlacedResult(part, name) == nullptr; });
  if (count == 0) return;
  notes.push_back(fmt::format("result {}: {} of {} geometries do not have it; they are grey",
                              Escape(name, {}), count, content.mParts.size()));
}

}  // namespace Qov::Tools
