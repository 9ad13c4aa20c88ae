#include "html/ReportPage.h"

#include <fmt/format.h>

#include <filesystem>
#include <nlohmann/json.hpp>

#include "Json.h"
#include "html/PageBuffers.h"
#include "html/PageTable.h"
#include "html/PageText.h"
#include "ledger/LedgerText.h"

namespace Qov::Tools {
namespace {

/// Returns "ok", "warning" or "error".
const char* NameOf(MergeReport::Kind kind) {
  if (kind == MergeReport::Kind::Ok) return "ok";
  return kind == MergeReport::Kind::Warning ? "warning" : "error";
}

const char* NameOfItem(std::size_t item) { return Tools::NameOf(static_cast<Item>(item)); }

std::string CountText(std::uint64_t count) { return fmt::format("{}", count); }

Json LedgerTables(const Ledger& ledger, std::vector<std::string>& notes) {
  PageTable output("Output", {"Item", "Copied", "In all", "Made"});
  PageTable inputs("Inputs", {"Input", "Item", "Found", "Copied", "Dropped"});
  PageTable renamed("Renamed results", {"Input", "Name", "Name in the output", "Times"});
  PageTable linked("Shared results", {"Input", "Result", "Result with its values", "Times"});
  PageTable rules("Words of these tables", {"Word", "Meaning"});
  for (std::size_t i = 0; i < kNumItems; ++i) {
    const OutputTally& tally = ledger.mOutput[i];
    if (tally == OutputTally{}) continue;
    output.Add({NameOfItem(i), CountText(tally.mCopied), CountText(tally.mFound), MadeText(tally)});
  }
  for (const InputLedger& input : ledger.mInputs) {
    const std::string path = PageText(input.mPath);
    for (std::size_t i = 0; i < kNumItems; ++i) {
      const InputTally& tally = input.mTallies[i];
      if (tally == InputTally{}) continue;
      inputs.Add({path, NameOfItem(i), CountText(tally.mFound), CountText(tally.mCopied),
                  DropsText(tally)});
    }
    for (const NamePair& pair : input.mRenamed) {
      renamed.Add({path, PageText(pair.mFrom), PageText(pair.mTo), CountText(pair.mCount)});
    }
    for (const NamePair& pair : input.mLinked) {
      linked.Add({path, PageText(pair.mTo), PageText(pair.mFrom), CountText(pair.mCount)});
    }
  }
  for (const auto& [name, explanation] : ExplainRules(ledger)) rules.Add({name, explanation});
  Json tables = Json::array();
  for (PageTable* table : {&output, &inputs, &renamed, &linked, &rules}) {
    table->AppendTo(tables, notes);
  }
  return tables;
}

Json ReportJson(const MergeReport& report, const Ledger& ledger) {
  Json counts = Json::array();
  for (std::size_t i = 0; i < kNumItems; ++i) {
    const std::uint64_t count = ledger.mOutput[i].mFound;
    if (count != 0) counts.push_back({NameOfItem(i), count});
  }
  Json lines = Json::array();
  for (const auto& [kind, text] : report.mLines) lines.push_back({NameOf(kind), text});
  Json pictures = Json::array();
  for (const ReportPicture& picture : report.mPictures) {
    pictures.push_back({{"name", PageText(picture.mName)},
                        {"png", Base64(picture.mPng)},
                        {"alt", PageText(picture.mDescription)}});
  }
  return {{"verdict", report.mVerdict},
          {"isOk", report.mIsOk},
          {"counts", std::move(counts)},
          {"lines", std::move(lines)},
          {"pictures", std::move(pictures)}};
}

}  // namespace

void WriteReportPage(const MergeReport& report, const Ledger& ledger, SafeOutput& output) {
  const std::string title = std::filesystem::path(report.mPath).filename().string();
  Json manifest = MakeManifest(title);
  std::vector<std::string> notes = report.mNotes;
  manifest["tables"] = LedgerTables(ledger, notes);
  manifest["notes"] = notes;
  manifest["report"] = ReportJson(report, ledger);
  WritePageBegin(title, manifest, output);
  WritePageEnd(output);
}

}  // namespace Qov::Tools
