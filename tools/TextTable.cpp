#include "TextTable.h"

#include <algorithm>
#include <utility>

#include "Qov/Util/Assert.h"
#include "Terminal.h"

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
  Lines lines;
  AppendLines(GetHeadings(), lines);
  for (const Row& row : mRows) AppendLines(row, lines);
  return lines;
}

TextTable::Lines TextTable::GetLinesOf(const Row& cells) const {
  Lines lines;
  AppendLines(cells, lines);
  return lines;
}

TextTable::Row TextTable::GetHeadings() const {
  Row headings;
  for (const Column& column : mColumns) headings.push_back(column.mHeading);
  return headings;
}

void TextTable::AppendLines(const Row& row, std::vector<std::string>& lines) const {
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
  PushTrimmed(std::move(line), lines);
}

}  // namespace Qov::Tools
