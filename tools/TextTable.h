#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace Qov::Tools {

/// Cells in aligned columns. Empty columns are left out. A cell that is wider than the limit does
/// not widen its column; the rest of its row moves to the next line.
class TextTable {
 public:
  enum class Align { Left, Right };
  struct Column {
    std::string mHeading;
    Align mAlign = Align::Left;
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
  Row GetHeadings() const;
  Lines GetLinesOf(const Row& cells) const;

 private:
  bool IsShown(std::size_t column) const { return mWidths[column] != 0; }
  void AppendLines(const Row& row, std::vector<std::string>& lines) const;

  std::vector<Column> mColumns;
  std::size_t mWidthLimit;
  std::vector<Row> mRows;
  std::vector<std::size_t> mWidths;  // 0: no cell has any text yet
};

}  // namespace Qov::Tools
