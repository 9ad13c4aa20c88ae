#include "stats/StatisticsReport.h"

#include <fmt/format.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "CsvText.h"
#include "TextTable.h"
#include "ValueText.h"

namespace Qov::Tools {
namespace {

using Align = TextTable::Align;
using Cut = TextTable::Cut;
using Rows = std::vector<StatisticsRow>;
using Paths = std::vector<std::string>;

bool IsMagnitude(const StatisticsRow& row) { return row.mComponent == StatisticsRow::kMagnitude; }

/// Returns true if all extremes are in the same node of the same file.
template <class SameAs>
bool AreAllSame(const Rows& rows, SameAs same) {
  const ValuePlace* first = nullptr;
  for (const StatisticsRow& row : rows) {
    if (!row.mValues.GetRange().HasRange()) continue;
    for (const ValuePlace* place : {&row.mLeast, &row.mGreatest}) {
      if (first == nullptr) first = place;
      if (!same(*first, *place)) return false;
    }
  }
  return true;
}

/// Creates the texts of places, without the parts that are the same for all.
class PlaceText {
 public:
  PlaceText(const Rows& rows, const Paths& paths, const TextStyle& style)
      : mPaths(paths),
        mStyle(style),
        mNamesNode(!AreAllSame(rows, [](const ValuePlace& a, const ValuePlace& b) {
          return a.mFile == b.mFile ? a.mNode == b.mNode : a.mNodeName == b.mNodeName;
        })) {}

  std::string operator()(const ValuePlace& place) const {
    std::string text = ItemText(place.mItem);
    if (mNamesNode) text += fmt::format(", {} [{}]", Escape(place.mNodeName, mStyle), place.mNode);
    if (mPaths.size() > 1) text += ", " + Escape(mPaths[place.mFile], mStyle);
    return text;
  }

 private:
  const Paths& mPaths;
  TextStyle mStyle;
  bool mNamesNode;
};

void PrintTable(TextTable table, Output& output) {
  const TextStyle& style = output.GetStyle();
  if (style.mTerminal) table.Fit(style.mWidth, style);
  for (const std::string& line : table.GetLines()) output.Line(line);
}

TextTable MakeFigures(const Rows& rows, std::size_t widthLimit, const TextStyle& style) {
  TextTable table({{"RESULT", Align::Left, Cut::Middle, false, 12},
                   {"COMPONENT"},
                   {"VALUES", Align::Right},
                   {"NAN", Align::Right},
                   {"LEAST", Align::Right},
                   {"GREATEST", Align::Right},
                   {"MEAN", Align::Right},
                   {"RMS", Align::Right}},
                  widthLimit);
  for (const StatisticsRow& row : rows) {
    const ArrayStatistics& range = row.mValues.GetRange();
    TextTable::Row cells{Escape(row.mResult, style), ComponentText(row),
                         fmt::format("{}", range.mNumValues),
                         range.mNumNaN == 0 ? "" : fmt::format("{}", range.mNumNaN)};
    cells.resize(8);
    if (range.HasRange()) {
      cells[4] = NumberText(range.mMinimum, row.mIntegers);
      cells[5] = NumberText(range.mMaximum, row.mIntegers);
      cells[6] = NumberText(row.mValues.GetMean(), false);
      cells[7] = NumberText(row.mValues.GetRootMeanSquare(), false);
    }
    table.AddRow(std::move(cells));
  }
  return table;
}

TextTable MakePlaces(const Rows& rows, const Paths& paths, std::size_t widthLimit,
                     const TextStyle& style) {
  TextTable table({{"RESULT", Align::Left, Cut::Middle, false, 12},
                   {"COMPONENT"},
                   {"LEAST AT", Align::Left, Cut::Middle},
                   {"GREATEST AT", Align::Left, Cut::Middle}},
                  widthLimit);
  const PlaceText placeText(rows, paths, style);
  for (const StatisticsRow& row : rows) {
    if (!row.mValues.GetRange().HasRange()) continue;
    table.AddRow({Escape(row.mResult, style), ComponentText(row), placeText(row.mLeast),
                  placeText(row.mGreatest)});
  }
  return table;
}

/// Returns a value as the shortest text that reads back as the same number.
std::string ExactText(double value, const StatisticsRow& row) {
  const bool isFloat = !row.mIntegers && !IsMagnitude(row);
  return isFloat ? fmt::format("{}", static_cast<float>(value)) : fmt::format("{}", value);
}

std::string ExtremeCsv(double value, const ValuePlace& place, const StatisticsRow& row,
                       const Paths& paths) {
  return fmt::format(",{},{},{},{},{},{}", ExactText(value, row), NameOf(place.mItem.mKind),
                     place.mItem.mNumber, place.mNode, CsvText(Escape(place.mNodeName, {})),
                     CsvText(Escape(paths[place.mFile], {})));
}

Json ExtremeJson(double value, const ValuePlace& place, const StatisticsRow& row,
                 const Paths& paths) {
  const bool isFloat = !row.mIntegers && !IsMagnitude(row);
  return {{"value", isFloat ? JsonFloat(static_cast<float>(value)) : JsonNumber(value)},
          {"item", NameOf(place.mItem.mKind)},
          {"number", place.mItem.mNumber},
          {"node", place.mNode},
          {"nodeName", JsonText(place.mNodeName)},
          {"file", JsonText(paths[place.mFile])}};
}

}  // namespace

std::string ComponentText(const StatisticsRow& row) {
  if (row.mWidth <= 1) return "";
  return IsMagnitude(row) ? "magnitude" : fmt::format("{}", row.mComponent);
}

void PrintTables(const Rows& rows, const Paths& paths, Output& output) {
  constexpr std::size_t kWidestInPipe = 60;
  const TextStyle& style = output.GetStyle();
  const std::size_t limit = style.mTerminal ? std::string::npos : kWidestInPipe;
  PrintTable(MakeFigures(rows, limit, style), output);
  output.Line();
  PrintTable(MakePlaces(rows, paths, limit, style), output);
}

void PrintCsv(const Rows& rows, const Paths& paths, Output& output) {
  output.Line(
      "result,component,values,nan,least,least_item,least_number,least_node,least_node_name,"
      "least_file,greatest,greatest_item,greatest_number,greatest_node,greatest_node_name,"
      "greatest_file,mean,rms");
  for (const StatisticsRow& row : rows) {
    const ArrayStatistics& range = row.mValues.GetRange();
    std::string line = fmt::format("{},{},{},{}", CsvText(Escape(row.mResult, {})),
                                   ComponentText(row), range.mNumValues, range.mNumNaN);
    if (range.HasRange()) {
      line += ExtremeCsv(range.mMinimum, row.mLeast, row, paths) +
              ExtremeCsv(range.mMaximum, row.mGreatest, row, paths) +
              fmt::format(",{},{}", row.mValues.GetMean(), row.mValues.GetRootMeanSquare());
    } else {
      line += std::string(14, ',');
    }
    output.Line(line);
  }
}

Json RowsJson(const Rows& rows, const Paths& paths) {
  Json list = Json::array();
  for (const StatisticsRow& row : rows) {
    const ArrayStatistics& range = row.mValues.GetRange();
    Json json = {{"result", JsonText(row.mResult)}};
    if (row.mWidth > 1) json["component"] = ComponentText(row);
    json["values"] = range.mNumValues;
    json["nan"] = range.mNumNaN;
    if (range.HasRange()) {
      json["least"] = ExtremeJson(range.mMinimum, row.mLeast, row, paths);
      json["greatest"] = ExtremeJson(range.mMaximum, row.mGreatest, row, paths);
      json["mean"] = JsonNumber(row.mValues.GetMean());
      json["rms"] = JsonNumber(row.mValues.GetRootMeanSquare());
    }
    list.push_back(std::move(json));
  }
  return list;
}

}  // namespace Qov::Tools
