#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "Terminal.h"

namespace Qov::Tools {

/// Cells in aligned columns. Empty columns are left out. A cell that is wider than the limit does
/// not widen its column; the rest of its row moves to the next line. Fit() cuts such cells instead.
class TextTable {
 public:
  enum class Align { Left, Right };
  /// The way in which Fit() may change the column.
  enum class Cut { Never, Start, Middle, End };
  static constexpr std::size_t kLeastWidth = 8;
  struct Column {
    std::string mHeading;
    Align mAlign = Align::Left;
    Cut mCut = Cut::Never;
    bool mIsOptional = false;  ///< Fit() may leave out the column.
    /// Fit() leaves out optional columns before it narrows the column further.
    std::size_t mLeastWidth = kLeastWidth;
  };

  TextTable(std::vector<Column> columns, std::size_t widthLimit);

  using Row = std::vector<std::string>;
  using Lines = std::vector<std::string>;

  /// Adds a row with one escaped cell per column.
  void AddRow(Row cells);
  /// Returns the headings and the added rows, without trailing blanks.
  Lines GetLines() const;

  /// Widens the columns for a row that is not kept, for tables of any length. After all rows are
  /// measured, GetLinesOf returns the lines of each row.
  void Measure(const Row& cells);
  Lines GetHeadingLines() const;
  Lines GetLinesOf(const Row& cells) const;

  /// Makes the measured rows fit `width` columns, each on one line: narrows the widest columns that
  /// may be cut, then leaves out optional columns from the right, which an ellipsis after the
  /// headings shows. Cuts the lines if that is not enough.
  void Fit(std::size_t width, const TextStyle& style);

 private:
  bool IsShown(std::size_t column) const { return mWidths[column] != 0; }
  std::size_t GetTotalWidth() const;
  void Narrow(bool toLeast);
  bool LeaveOutColumn();
  Row CutCells(const Row& row) const;
  void AppendLines(const Row& row, std::vector<std::string>& lines) const;

  std::vector<Column> mColumns;
  std::size_t mWidthLimit;
  std::vector<Row> mRows;
  std::vector<std::size_t> mWidths;  // 0: no cell has any text yet, or the column is left out
  std::optional<TextStyle> mFitStyle;
  std::size_t mFitWidth = 0;
  bool mHasLeftOut = false;
};

}  // namespace Qov::Tools
