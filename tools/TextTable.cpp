#include "TextTable.h"

#include <algorithm>
#include <numeric>
#include <utility>

#include "FitText.h"
#include "Qov/Util/Assert.h"

namespace Qov::Tools {
namespace {

constexpr std::size_t kGap = 2;

std::string Blanks(std::size_t n) { return std::string(n, ' '); }

std::string Aligned(const std::string& cell, std::size_t width, TextTable::Align align) {
  const std::size_t padding = width - std::min(width, DisplayWidth(cell));
  return align == TextTable::Align::Right ? Blanks(padding) + cell : cell + Blanks(padding);
}

void PushTrimmed(std::string line, std::vector<std::string>& lines) {
  line.erase(line.find_last_not_of(' ') + 1);
  if (!line.empty()) lines.push_back(std::move(line));
}

}  // namespace

TextTable::TextTable(std::vector<Column> columns, std::size_t widthLimit)
    : mColumns(std::move(columns)), mWidthLimit(widthLimit), mWidths(mColumns.size()) {}

void TextTable::Measure(const Row& cells) {
  QOV_ASSERT(cells.size() == mColumns.size());
  for (std::size_t i = 0; i < cells.size(); ++i) {
    if (cells[i].empty()) continue;
    const std::size_t width = DisplayWidth(cells[i]);
    const std::size_t kept = width > mWidthLimit ? 0 : width;
    mWidths[i] = std::max({mWidths[i], mColumns[i].mHeading.size(), kept});
  }
}

void TextTable::AddRow(Row cells) {
  Measure(cells);
  mRows.push_back(std::move(cells));
}

TextTable::Lines TextTable::GetLines() const {
  Lines lines = GetHeadingLines();
  for (const Row& row : mRows) AppendLines(row, lines);
  return lines;
}

TextTable::Lines TextTable::GetLinesOf(const Row& cells) const {
  Lines lines;
  AppendLines(cells, lines);
  return lines;
}

TextTable::Lines TextTable::GetHeadingLines() const {
  Row headings;
  for (const Column& column : mColumns) headings.push_back(column.mHeading);
  Lines lines = GetLinesOf(headings);
  if (!mHasLeftOut || lines.empty()) return lines;
  lines.back().append(Blanks(kGap)).append(Ellipsis(*mFitStyle));
  lines.back() = FitEnd(lines.back(), mFitWidth, *mFitStyle);
  return lines;
}

std::size_t TextTable::GetTotalWidth() const {
  const auto numShown = static_cast<std::size_t>(
      std::count_if(mWidths.begin(), mWidths.end(), [](std::size_t width) { return width != 0; }));
  const std::size_t gaps = numShown == 0 ? 0 : (numShown - 1) * kGap;
  const std::size_t mark = mHasLeftOut ? kGap + DisplayWidth(Ellipsis(*mFitStyle)) : 0;
  return std::accumulate(mWidths.begin(), mWidths.end(), gaps + mark);
}

/// Narrows the columns that may be cut, always the widest one: to their least widths, or to
/// kLeastWidth.
void TextTable::Narrow(bool toLeast) {
  for (std::size_t i = 0; i < mWidths.size(); ++i) {
    if (mColumns[i].mCut != Cut::Never) mWidths[i] = std::min(mWidths[i], mFitWidth);
  }
  while (GetTotalWidth() > mFitWidth) {
    std::size_t* widest = nullptr;
    for (std::size_t i = 0; i < mWidths.size(); ++i) {
      const std::size_t least = toLeast ? kLeastWidth : mColumns[i].mLeastWidth;
      if (mColumns[i].mCut == Cut::Never || mWidths[i] <= least) continue;
      if (widest == nullptr || mWidths[i] > *widest) widest = &mWidths[i];
    }
    if (widest == nullptr) return;
    --*widest;
  }
}

/// Leaves out the last optional column. Returns false if there is none.
bool TextTable::LeaveOutColumn() {
  for (std::size_t i = mColumns.size(); i-- > 0;) {
    if (!mColumns[i].mIsOptional || !IsShown(i)) continue;
    mWidths[i] = 0;
    return mHasLeftOut = true;
  }
  return false;
}

void TextTable::Fit(std::size_t width, const TextStyle& style) {
  mFitWidth = width;
  mFitStyle = style;
  const std::vector<std::size_t> wanted = mWidths;
  Narrow(false);
  while (GetTotalWidth() > width && LeaveOutColumn()) {
    for (std::size_t i = 0; i < mWidths.size(); ++i) {
      if (IsShown(i)) mWidths[i] = wanted[i];
    }
    Narrow(false);
  }
  Narrow(true);
}

TextTable::Row TextTable::CutCells(const Row& row) const {
  Row cells = row;
  for (std::size_t i = 0; i < cells.size(); ++i) {
    if (mColumns[i].mCut == Cut::Start) cells[i] = FitStart(cells[i], mWidths[i], *mFitStyle);
    if (mColumns[i].mCut == Cut::Middle) cells[i] = FitMiddle(cells[i], mWidths[i], *mFitStyle);
    if (mColumns[i].mCut == Cut::End) cells[i] = FitEnd(cells[i], mWidths[i], *mFitStyle);
  }
  return cells;
}

void TextTable::AppendLines(const Row& cells, std::vector<std::string>& lines) const {
  const Row row = mFitStyle ? CutCells(cells) : cells;
  std::string line;
  std::size_t start = 0;
  for (std::size_t i = 0; i < row.size(); ++i) {
    if (!IsShown(i)) continue;
    std::size_t used = DisplayWidth(line);
    if (start != 0 && used + kGap > start) {
      PushTrimmed(std::move(line), lines);
      line = Blanks(start);
      used = start;
    }
    line += Blanks(start - used) + Aligned(row[i], mWidths[i], mColumns[i].mAlign);
    start += mWidths[i] + kGap;
  }
  if (mFitStyle) line = FitEnd(line, mFitWidth, *mFitStyle);
  PushTrimmed(std::move(line), lines);
}

}  // namespace Qov::Tools
