#include "html/PageTable.h"

#include <fmt/format.h>

#include <nlohmann/json.hpp>
#include <utility>

#include "Plural.h"

namespace Qov::Tools {

PageTable::PageTable(const char* title, std::vector<const char*> columns)
    : mTitle(title), mColumns(std::move(columns)) {}

void PageTable::Add(std::vector<std::string> cells) {
  if (++mCount <= kMostRows) mRows.push_back(std::move(cells));
}

void PageTable::AppendTo(Json& tables, std::vector<std::string>& notes) {
  if (mCount == 0) return;
  if (mCount > kMostRows) {
    notes.push_back(fmt::format("table \"{}\": left out: {}, because a table has at most {} rows",
                                mTitle, Plural(mCount - kMostRows, "row"), kMostRows));
  }
  tables.push_back({{"title", mTitle}, {"columns", mColumns}, {"rows", std::move(mRows)}});
}

}  // namespace Qov::Tools
